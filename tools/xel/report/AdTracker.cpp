#include "report/AdTracker.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

#include "common/PrintableText.h"

namespace xel::report {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> eventsOfCalls = {{
    {"adDidStart", "start"},
    {"adDidCrossFirstQuartile", "firstquartile"},
    {"adDidCrossMidpoint", "midpoint"},
    {"adDidCrossThirdQuartile", "thirdquartile"},
    {"adDidComplete", "complete"},
}};

std::optional<std::string> textOf(const JSONValue& value) {
  const auto text = value.text();
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

void countURLs(const JSONValue& trackingURLs,
               std::map<std::string, std::size_t, std::less<>>& counts) {
  trackingURLs.forEachMember([&counts](std::string_view event, const JSONValue& urls) {
    counts[std::string(event)] += urls.elements().size();
  });
}

}  // namespace

std::string_view adEventOf(std::string_view call) {
  const auto found = std::find_if(eventsOfCalls.begin(), eventsOfCalls.end(),
                                  [call](const auto& row) { return row.first == call; });
  return found == eventsOfCalls.end() ? std::string_view() : found->second;
}

void AdTracker::addCall(std::string_view call, const JSONValue& line) {
  if (call == "adBreakDidStart") return startBreak(line["adBreakInfo"]);
  if (call == "adBreakDidEnd") return endBreak();
  const auto event = adEventOf(call);
  if (event.empty()) return;
  if (event == "start") startAd(line["ad"]);
  if (!isPlaying_) return;
  report_.ads[*lastStarted_].reached.emplace_back(event);
  if (event == "complete") completeAd();
}

void AdTracker::startBreak(const JSONValue& info) {
  if (isInBreak_) report_.breaks.back().end = now_.time;
  isInBreak_ = true;
  report_.breaks.push_back({.key = textOf(info["adBreakKey"]).value_or(""),
                            .start = now_.time,
                            .end = now_.time,
                            .position = now_.position,
                            .totalAds = info["totalAds"].integer().value_or(-1),
                            .duration = info["duration"].number().value_or(0)});
}

void AdTracker::startAd(const JSONValue& ad) {
  cutOff("The next ad started before its complete was met.");
  // An ad can start without its break's start: after a seek into the break, for
  // one.
  const auto info = ad["adBreakInfo"];
  if (!isInBreak_ || report_.breaks.back().key != info["adBreakKey"].text()) startBreak(info);

  report_.ads.push_back({.key = textOf(ad["adKey"]).value_or(""),
                         .id = textOf(ad["adID"]),
                         .title = textOf(ad["adTitle"]),
                         .system = textOf(ad["adSystem"]),
                         .adBreak = report_.breaks.size() - 1,
                         .breakKey = report_.breaks.back().key,
                         .place = ad["adPosition"].integer().value_or(-1),
                         .duration = ad["duration"].number().value_or(0),
                         .start = now_.time,
                         .end = now_.time,
                         .position = now_.position});
  lastStarted_ = report_.ads.size() - 1;
  isPlaying_ = true;
  pingsOfEvents_.clear();
  countURLs(ad["trackingURLs"], pingsOfEvents_);
  const auto creatives = ad["creatives"].elements();
  const auto selected = ad["selectedCreative"].integer().value_or(-1);
  if (selected >= 0 && static_cast<std::size_t>(selected) < creatives.size()) {
    countURLs(creatives[static_cast<std::size_t>(selected)]["trackingURLs"], pingsOfEvents_);
  }
}

void AdTracker::cutOff(const std::string& why) {
  if (!isPlaying_) return;
  auto& ad = report_.ads[*lastStarted_];
  ad.why = why;
  if (const auto* jump = lastJump()) {
    ad.isExpected = jump->isSeek;
    ad.why = (jump->isSeek ? "The viewer left it by a seek to " : "The stream's time jumped to ") +
             clockText(jump->to) + '.';
  }
  endAd(AdOutcome::cutOff);
}

void AdTracker::completeAd() {
  auto& ad = report_.ads[*lastStarted_];
  const std::set<std::string_view> reached(ad.reached.begin(), ad.reached.end());
  if (reached.size() < eventsOfCalls.size()) {
    const auto* jump = lastJump();
    ad.isExpected = jump && jump->isSeek;
    ad.why = jump ? "A jump to " + clockText(jump->to) + " passed some of its quartiles by."
                  : "Not all of its quartiles were met.";
  }
  endAd(AdOutcome::completed);
}

void AdTracker::endAd(AdOutcome outcome) {
  auto& ad = report_.ads[*lastStarted_];
  isPlaying_ = false;
  ad.end = now_.time;
  ad.outcome = outcome;
  for (const auto& [call, event] : eventsOfCalls) {
    if (std::find(ad.reached.begin(), ad.reached.end(), event) != ad.reached.end()) continue;
    const auto pings = pingsOfEvents_.find(event);
    if (pings != pingsOfEvents_.end()) ad.pingsNotSent += pings->second;
  }
}

void AdTracker::endBreak() {
  cutOff("It overran by a second before its complete was met.");
  if (std::exchange(isInBreak_, false)) report_.breaks.back().end = now_.time;
}

const Jump* AdTracker::lastJump() const {
  if (report_.jumps.empty()) return nullptr;
  const auto& jump = report_.jumps.back();
  const bool isSince = jump.time >= report_.ads[*lastStarted_].start;
  return isSince && jump.to > jump.from ? &jump : nullptr;
}

void AdTracker::finish() {
  if (isPlaying_) {
    report_.ads[*lastStarted_].isExpected = true;
    report_.ads[*lastStarted_].why = "The session ended while it was playing.";
    endAd(AdOutcome::cutOff);
  }
  if (std::exchange(isInBreak_, false)) report_.breaks.back().end = now_.time;
}

}  // namespace xel::report
