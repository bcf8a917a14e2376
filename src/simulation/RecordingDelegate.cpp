#include "xel/simulation/RecordingDelegate.h"

#include <charconv>
#include <utility>

#include "xel/model/XELAd.h"

namespace xel::simulation {
namespace {

/// At most three decimals, without trailing zeros.
std::string decimal(double value) {
  char buffer[400];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 3).ptr;
  std::string text(buffer, end);
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string describe(const XELAd& ad) { return ad.adKey().value_or("(no key)"); }

std::string describe(const XELCuepoint& cuepoint) {
  return "[" + decimal(cuepoint.startTime()) + "-" + decimal(cuepoint.endTime()) +
         (cuepoint.isPlayed() ? " played]" : "]");
}

std::string describe(const Error& error) {
  std::string text = error.domain + " " + std::to_string(error.code) + ": " + error.description;
  if (error.underlying) text += " (" + describe(*error.underlying) + ")";
  return text;
}

}  // namespace

RecordingDelegate::RecordingDelegate() = default;
RecordingDelegate::~RecordingDelegate() = default;

std::vector<std::string> RecordingDelegate::lines(Countdowns countdowns) const {
  std::vector<std::string> lines;
  for (const Event& event : events_) {
    if (countdowns == Countdowns::leftOut && event.name == "didCountdownTo") continue;
    lines.push_back(event.line);
  }
  return lines;
}

void RecordingDelegate::streamManager_didInitializeStream(XELStreamManager&,
                                                          const std::string& streamID) {
  record({.name = "didInitializeStream", .line = streamID, .streamID = streamID});
}

void RecordingDelegate::streamManager_didReceiveError(XELStreamManager&,
                                                      const std::shared_ptr<const Error>& error) {
  record({.name = "didReceiveError",
          .line = error ? describe(*error) : "(no error object)",
          .error = error});
}

void RecordingDelegate::streamManagerIsReadyForPlayback(XELStreamManager&) {
  record({.name = "streamManagerIsReadyForPlayback", .line = {}});
}

void RecordingDelegate::streamManager_adBreakDidStart(XELStreamManager&,
                                                      const std::shared_ptr<XELAdBreakInfo>& info) {
  record({.name = "adBreakDidStart",
          .line = info->adBreakKey() + " (" + std::to_string(info->totalAds()) + " ads, " +
                  decimal(info->duration()) + " s)",
          .adBreakInfo = info});
}

void RecordingDelegate::streamManager_adDidStart(XELStreamManager&,
                                                 const std::shared_ptr<XELAd>& ad) {
  recordAd("adDidStart", ad);
}

void RecordingDelegate::streamManager_adDidCrossFirstQuartile(XELStreamManager&,
                                                              const std::shared_ptr<XELAd>& ad) {
  recordAd("adDidCrossFirstQuartile", ad);
}

void RecordingDelegate::streamManager_adDidCrossMidpoint(XELStreamManager&,
                                                         const std::shared_ptr<XELAd>& ad) {
  recordAd("adDidCrossMidpoint", ad);
}

void RecordingDelegate::streamManager_adDidCrossThirdQuartile(XELStreamManager&,
                                                              const std::shared_ptr<XELAd>& ad) {
  recordAd("adDidCrossThirdQuartile", ad);
}

void RecordingDelegate::streamManager_adDidComplete(XELStreamManager&,
                                                    const std::shared_ptr<XELAd>& ad) {
  recordAd("adDidComplete", ad);
}

void RecordingDelegate::streamManager_adBreakDidEnd(XELStreamManager&,
                                                    const std::shared_ptr<XELAdBreakInfo>& info) {
  record({.name = "adBreakDidEnd", .line = info->adBreakKey(), .adBreakInfo = info});
}

void RecordingDelegate::streamManager_ad_didCountdownTo(XELStreamManager&,
                                                        const std::shared_ptr<XELAd>& ad,
                                                        double remaining) {
  record({.name = "didCountdownTo",
          .line = describe(*ad) + " " + decimal(remaining),
          .ad = ad,
          .remaining = remaining});
}

void RecordingDelegate::streamManager_didUpdateCuepoints(
    XELStreamManager&, const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) {
  std::string line;
  for (const auto& cuepoint : cuepoints) {
    if (!line.empty()) line += ' ';
    line += describe(*cuepoint);
  }
  record({.name = "didUpdateCuepoints",
          .line = line.empty() ? "(none)" : line,
          .cuepoints = cuepoints});
}

void RecordingDelegate::recordAd(std::string name, const std::shared_ptr<XELAd>& ad) {
  record({.name = std::move(name), .line = describe(*ad), .ad = ad});
}

void RecordingDelegate::record(Event event) {
  event.line = event.line.empty() ? event.name : event.name + " " + event.line;
  events_.push_back(event);
  // A copy: the hook may let go of this delegate.
  if (const auto hook = onEvent) hook(event);
}

}  // namespace xel::simulation
