// Stream info documents: every lookup, with the keys that stand in the document and with others,
// and then a stream with that document, live and on demand.

#include <algorithm>
#include <limits>
#include <set>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/support/Viewer.h"
#include "model/XELStreamInfo.h"

namespace xel::fuzz {
namespace {

using namespace simulation;
using Keys = std::set<std::string>;

/// All names of members, and all texts.
void collectKeys(const JSONValue& value, Keys& keys, int depth = 0) {
  if (depth > 4 || keys.size() > 64) return;
  if (const auto text = value.text(); text && text->size() < 100) keys.emplace(*text);
  for (const auto& element : value.elements()) collectKeys(element, keys, depth + 1);
  value.forEachMember([&](std::string_view name, const JSONValue& member) {
    keys.emplace(name);
    collectKeys(member, keys, depth + 1);
  });
}

void lookUp(const XELStreamInfo& info, const Keys& keys) {
  const JSONValue& document = info.streamInfo();
  for (const std::string& key : keys) {
    const bool isTag = document["tags"].has(key), isAd = document["ads"].has(key),
               isBreak = document["breaks"].has(key);
    require(isTag || (info.eventForMetadata(key) + info.adKeyForMetadata(key)).empty(),
            "an event of a text that is no tag");
    require(isAd || (info.adBreakKeyForAdKey(key) + info.vastForAdKey(key)).empty(),
            "texts of an ad that is not there");
    require(isAd || (info.adPositionForAdKey(key) == -1 && info.durationForAdKey(key) == 0 &&
                     info.previousAdsDurationForAdKey(key) == 0),
            "numbers of an ad that is not there");
    require(
        isBreak || (info.totalAdsForAdBreakKey(key) == -1 && info.durationForAdBreakKey(key) == 0),
        "numbers of a break that is not there");
    require(std::isfinite(info.durationForAdKey(key)) &&
                std::isfinite(info.durationForAdBreakKey(key)) &&
                std::isfinite(info.previousAdsDurationForAdKey(key)),
            "a duration that is not finite");
  }
}

void lookUp(const XELStreamInfo& info, double time) {
  using Limits = std::numeric_limits<double>;
  const auto cuepoints = info.cuepoints();
  require(
      std::is_sorted(cuepoints.begin(), cuepoints.end(),
                     [](const auto& a, const auto& b) { return a->startTime() < b->startTime(); }),
      "cue points that are not in order");
  for (const double at : {time, -time, 0.0, -0.5, 12.9, 0x1p63, -0x1p63, 1e300, Limits::infinity(),
                          -Limits::infinity(), Limits::quiet_NaN(), Limits::denorm_min()}) {
    const bool isEventful = !info.eventArrayForTime(at).empty();
    require(!isEventful || std::abs(at) <= 0x1p63, "events at no time");
    const auto index = XELStreamInfo::adBreakIndexForStartTime_cuepoints(at, cuepoints);
    const auto offset = XELStreamInfo::timeOffsetForStartTime_cuepoints(at, cuepoints);
    require(index >= -1 && index < static_cast<std::int64_t>(cuepoints.size()),
            "the index of no cue point");
    require(offset == (index < 0 ? 0 : cuepoints[static_cast<std::size_t>(index)]->startTime()),
            "a time offset that is not its cue point's");
  }
}

/// @param texts timed metadata.
void play(const std::string& document, const Keys& texts, bool live, double time) {
  SimulatedPlatform platform;
  Viewer viewer(platform, "v", std::make_shared<ScriptedDisplay>());
  auto answer = live ? StreamInitAnswerBuilder::live() : StreamInitAnswerBuilder::vod();
  answer.manifest = viewer.manifestURL();
  (live ? answer.id3EventsURL : answer.timeEventsURL) = viewer.documentURL();
  platform.server().answer(viewer.initURL(live), {200, answer.build()});
  platform.server().answer(viewer.documentURL(), {200, document});
  viewer.request(live);
  platform.loop().runUntilIdle();

  const auto display = viewer.display();
  display->reportProgress(time);
  auto text = texts.begin();
  for (double at = 0; at < 60; at += 0.5) {
    display->reportProgress(at);
    if (live && text != texts.end()) display->reportTXXX(*text++);
    viewer.requireConversionsAt(at);
  }
  platform.loop().advance(60);
  viewer.requireAllAnswered();
  viewer.letGoOf(Viewer::Held::all);
  viewer.requireWhatIsLeft(false);
}

}  // namespace
}  // namespace xel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace xel::fuzz;
  FuzzedDataProvider input(data, size);
  const auto time = input.ConsumeFloatingPoint<double>();
  const std::string document = input.ConsumeRemainingBytesAsString();
  const auto parsed = xel::JSONValue::parse(document);
  Keys keys{"", "start", "none such", "\xFF"};
  collectKeys(parsed.value, keys);
  const auto info = XELStreamInfo::initWithStreamInfo(parsed.value);
  lookUp(*info, keys);
  lookUp(*info, time);
  for (const bool live : {true, false}) play(document, keys, live, time);
  return 0;
}
