#include "play/EventText.h"

#include <array>
#include <cstdio>
#include <utility>

#include "common/PrintableText.h"

namespace xel {
namespace {

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

std::string secondsText(double seconds) {
  std::array<char, 400> text;  // The longest double has 309 digits before the point.
  std::snprintf(text.data(), text.size(), "%.1f s", seconds);
  return text.data();
}

std::string spanText(const XELCuepoint& cuepoint) {
  return clockText(cuepoint.startTime()) + " to " + clockText(cuepoint.endTime());
}

std::string errorText(const std::shared_ptr<const Error>& error) {
  if (!error) return "the display gave no reason";
  auto text = error->description + " (" + error->domain + " " + std::to_string(error->code) + ")";
  if (error->underlying) text += ": " + errorText(error->underlying);
  return text;
}

std::string titleText(const XELAd& ad) {
  if (ad.adTitle()) return '"' + *ad.adTitle() + '"';
  return ad.adKey().value_or("");
}

/// What happened in a few words, and the rest of the line.
using Words = std::pair<std::string, std::string>;

struct ToWords {
  Words operator()(const StreamInitialized& event) const { return {"stream", event.streamID}; }
  Words operator()(const StreamLoaded& event) const { return {"loading", event.url}; }
  Words operator()(const SeekStarted& event) const { return {"seek", "to " + clockText(event.to)}; }
  Words operator()(const ReadyForPlayback&) const { return {"ready", ""}; }
  Words operator()(const BreakEvent& event) const {
    if (event.name == "adBreakDidEnd") return {"ad break ended", ""};
    return {"ad break started",
            countText(event.info->totalAds()) + " ads, " + secondsText(event.info->duration())};
  }
  Words operator()(const AdEvent& event) const {
    const auto position =
        countText(event.ad->adPosition()) + "/" + countText(event.ad->adBreakInfo()->totalAds());
    auto about = position + " " + titleText(*event.ad);
    if (event.name == "adDidStart") about += ", " + secondsText(event.ad->duration());
    return {std::string(wordsFor(event.name)), about};
  }
  Words operator()(const AdCountdown& event) const {
    return {"ad plays", secondsText(event.remaining) + " left"};
  }
  Words operator()(const CuepointsUpdated& event) const {
    std::string list;
    for (const auto& cuepoint : event.cuepoints) {
      list += (list.empty() ? "" : ", ") + spanText(*cuepoint);
      if (cuepoint->isPlayed()) list += " (played)";
    }
    return {"cue points", list.empty() ? "none" : list};
  }
  Words operator()(const ErrorReceived& event) const { return {"error", errorText(event.error)}; }
  Words operator()(const PingSent& event) const { return {"ping " + event.pingEvent, event.url}; }
  Words operator()(const PingAnswered& event) const {
    std::array<char, 40> duration;
    std::snprintf(duration.data(), duration.size(), " in %.0f ms: ", event.milliseconds);
    const auto outcome = event.error ? errorText(event.error) : std::to_string(event.status);
    return {"ping answered", event.pingEvent + duration.data() + outcome + ", " + event.url};
  }
  Words operator()(const TimeConverted& event) const {
    const auto time = clockText(event.time);
    return {"conversion",
            "stream time " + time + " is content time " + clockText(event.contentTime) +
                "; content time " + time + " is stream time " + clockText(event.streamTime) +
                "; previous cue point: " +
                (event.previousCuepoint ? spanText(*event.previousCuepoint) : "none")};
  }

 private:
  static std::string_view wordsFor(std::string_view adEvent) {
    if (adEvent == "adDidStart") return "ad started";
    if (adEvent == "adDidCrossFirstQuartile") return "first quartile";
    if (adEvent == "adDidCrossMidpoint") return "midpoint";
    if (adEvent == "adDidCrossThirdQuartile") return "third quartile";
    return "ad completed";
  }
};

}  // namespace

std::optional<std::string> toLine(double time, const PlayEvent& event) {
  if (std::holds_alternative<AdCountdown>(event)) return std::nullopt;
  const auto [what, about] = std::visit(ToWords{}, event);
  auto line = padded(clockText(time), 8) + "  " + padded(printable(what), 18);
  if (about.empty()) return line.substr(0, line.find_last_not_of(' ') + 1);
  return line + "  " + printable(about);
}

}  // namespace xel
