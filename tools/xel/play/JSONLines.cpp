#include "play/JSONLines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include <boost/json.hpp>

#include "common/UTF8.h"

namespace xel {
namespace {

namespace json = boost::json;

void write(const json::value& value, std::string& out);

void write(double number, std::string& out) {
  if (!std::isfinite(number)) {
    out += "null";
    return;
  }
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  out.append(digits.data(), end);
}

template <typename Items, typename WriteItem>
void writeList(const Items& items, std::string_view brackets, std::string& out, WriteItem item) {
  out += brackets.front();
  for (auto it = items.begin(); it != items.end(); ++it) {
    if (it != items.begin()) out += ',';
    item(*it);
  }
  out += brackets.back();
}

/// Like `json::serialize`, but that numbers are written the way people write them.
void write(const json::value& value, std::string& out) {
  if (const auto* number = value.if_double()) return write(*number, out);
  if (const auto* array = value.if_array()) {
    return writeList(*array, "[]", out, [&](const json::value& item) { write(item, out); });
  }
  if (const auto* object = value.if_object()) {
    return writeList(*object, "{}", out, [&](const json::key_value_pair& member) {
      out += json::serialize(json::string(member.key())) + ':';
      write(member.value(), out);
    });
  }
  out += json::serialize(value);
}

json::string text(std::string_view value) { return json::string(withValidUTF8(value)); }

json::value textOrNull(const std::optional<std::string>& value) {
  return value ? json::value(text(*value)) : json::value(nullptr);
}

json::value toValue(const std::shared_ptr<const Error>& error) {
  if (!error) return nullptr;
  return json::object{{"domain", text(error->domain)},
                      {"code", error->code},
                      {"description", text(error->description)},
                      {"underlying", toValue(error->underlying)}};
}

json::value toValue(const std::shared_ptr<XELCuepoint>& cuepoint) {
  if (!cuepoint) return nullptr;
  return json::object{{"startTime", cuepoint->startTime()},
                      {"endTime", cuepoint->endTime()},
                      {"isPlayed", cuepoint->isPlayed()}};
}

json::value toValue(const std::shared_ptr<XELAdBreakInfo>& info) {
  if (!info) return nullptr;
  return json::object{{"adBreakKey", text(info->adBreakKey())},
                      {"totalAds", info->totalAds()},
                      {"duration", info->duration()},
                      {"adBreakIndex", info->adBreakIndex()},
                      {"timeOffset", info->timeOffset()}};
}

json::value toValue(const TrackingURLs& trackingURLs) {
  json::object object;
  for (const auto& [event, urls] : trackingURLs) {
    json::array list;
    for (const auto& url : urls) list.push_back(text(url));
    object[text(event)] = std::move(list);
  }
  return object;
}

json::value toValue(const std::shared_ptr<XELCreative>& creative) {
  return json::object{{"isLinear", creative->isLinear()},
                      {"adID", textOrNull(creative->adID())},
                      {"universalAdIdValue", textOrNull(creative->universalAdIdValue())},
                      {"universalAdIdRegistry", textOrNull(creative->universalAdIdRegistry())},
                      {"sequence", creative->sequence()},
                      {"trackingURLs", toValue(creative->trackingURLs())}};
}

json::value toValue(const std::shared_ptr<XELCompanion>& companion) {
  return json::object{{"staticResourceURL", textOrNull(companion->staticResourceURL())},
                      {"apiFramework", textOrNull(companion->apiFramework())},
                      {"width", companion->width()},
                      {"height", companion->height()},
                      {"trackingURLs", toValue(companion->trackingURLs())}};
}

/// A document of the library's, as it came.
json::value toValue(const JSONValue& value) {
  json::parse_options options;
  options.max_depth = 1024;
  json::error_code error;
  return json::parse(withValidUTF8(value.serialize()), error, {}, options);
}

template <typename Item>
json::value toValue(const std::vector<Item>& items) {
  json::array array;
  for (const auto& item : items) array.push_back(toValue(item));
  return array;
}

json::value indexOf(const std::shared_ptr<XELCreative>& creative,
                    const std::vector<std::shared_ptr<XELCreative>>& creatives) {
  const auto found = std::find(creatives.begin(), creatives.end(), creative);
  if (found == creatives.end()) return nullptr;
  return std::int64_t{found - creatives.begin()};
}

json::value toValue(const std::shared_ptr<XELAd>& ad) {
  if (!ad) return nullptr;
  return json::object{{"adKey", textOrNull(ad->adKey())},
                      {"adID", textOrNull(ad->adID())},
                      {"adTitle", textOrNull(ad->adTitle())},
                      {"adSystem", textOrNull(ad->adSystem())},
                      {"adDescription", textOrNull(ad->adDescription())},
                      {"duration", ad->duration()},
                      {"adPosition", ad->adPosition()},
                      {"adStartTime", ad->adStartTime()},
                      {"adBreakInfo", toValue(ad->adBreakInfo())},
                      {"creatives", toValue(ad->creatives())},
                      {"companions", toValue(ad->companions())},
                      {"trackingURLs", toValue(ad->trackingURLs())},
                      {"selectedCreative", indexOf(ad->selectedCreative(), ad->creatives())}};
}

/// Adds what the event carries beside its name.
struct AddFields {
  json::object& line;

  void operator()(const StreamInitialized& event) const { line["streamID"] = text(event.streamID); }
  void operator()(const StreamLoaded& event) const {
    line["url"] = text(event.url);
    line["subtitles"] = toValue(event.subtitles);
  }
  void operator()(const SeekStarted& event) const { line["to"] = event.to; }
  void operator()(const ReadyForPlayback&) const {}
  void operator()(const BreakEvent& event) const { line["adBreakInfo"] = toValue(event.info); }
  void operator()(const AdEvent& event) const { line["ad"] = toValue(event.ad); }
  void operator()(const AdCountdown& event) const {
    line["ad"] = toValue(event.ad);
    line["remaining"] = event.remaining;
  }
  void operator()(const CuepointsUpdated& event) const {
    line["cuepoints"] = toValue(event.cuepoints);
  }
  void operator()(const ErrorReceived& event) const { line["error"] = toValue(event.error); }
  void operator()(const PingSent& event) const {
    line["pingEvent"] = text(event.pingEvent);
    line["url"] = text(event.url);
  }
  void operator()(const PingAnswered& event) const {
    line["pingEvent"] = text(event.pingEvent);
    line["url"] = text(event.url);
    if (event.error) {
      line["error"] = toValue(event.error);
    } else {
      line["status"] = event.status;
    }
    line["ms"] = event.milliseconds;
  }
  void operator()(const TimeConverted& event) const {
    line["time"] = event.time;
    line["contentTime"] = event.contentTime;
    line["streamTime"] = event.streamTime;
    line["previousCuepoint"] = toValue(event.previousCuepoint);
  }
};

}  // namespace

std::string toJSON(double time, const PlayEvent& event) {
  json::object line;
  line["t"] = time;
  line["event"] = std::visit([](const auto& any) { return json::string(any.name); }, event);
  std::visit(AddFields{line}, event);
  std::string out;
  write(json::value(std::move(line)), out);
  return out;
}

void JSONLines::show(double time, const PlayEvent& event) {
  const auto line = toJSON(time, event) + '\n';
  std::fwrite(line.data(), 1, line.size(), out_);
  std::fflush(out_);
}

}  // namespace xel
