#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "inspect/ClientPlatform.h"
#include "inspect/ClientRuns.h"

namespace xel::inspect {
namespace {

using Heard = simulation::RecordingDelegate::Event;

/// The delegate call that an event leads to; empty for an event that is not known.
std::string_view callFor(std::string_view type) {
  static const std::map<std::string_view, std::string_view> calls = {
      {"start", "adDidStart"},
      {"firstquartile", "adDidCrossFirstQuartile"},
      {"midpoint", "adDidCrossMidpoint"},
      {"thirdquartile", "adDidCrossThirdQuartile"},
      {"complete", "adDidComplete"}};
  const auto found = calls.find(type);
  return found == calls.end() ? std::string_view() : found->second;
}

/// Matches the events of a document with the delegate calls that they led to.
class EventMatcher {
 public:
  EventMatcher(const StreamDocument& document, const std::vector<Heard>& heard)
      : document_(document), heard_(heard), next_(heard.size()) {
    result_.ads.resize(document.ads.size());
  }

  /// @param second whose tick has just been reported.
  void match(const StreamDocument::Second& second) {
    skip("didCountdownTo");
    if (skip("adBreakDidEnd")) leave("its break had overrun by a second");
    for (const auto& event : second.events) {
      if (event.adKey.empty() || callFor(event.type).empty()) continue;
      if (event.type == "start") {
        matchStart(event);
      } else {
        matchOther(event);
      }
    }
    next_ = heard_.size();
  }

  PlayThrough take() { return std::move(result_); }

 private:
  bool skip(std::string_view call) {
    if (next_ >= heard_.size() || heard_[next_].name != call) return false;
    ++next_;
    return true;
  }

  bool isNext(const StreamDocument::Event& event) const {
    return next_ < heard_.size() && heard_[next_].name == callFor(event.type) &&
           heard_[next_].ad->adKey() == event.adKey;
  }

  void leave(std::string why) {
    if (!current_.empty()) whyOver_[current_] = std::move(why);
    current_.clear();
  }

  void matchStart(const StreamDocument::Event& event) {
    const bool isFirst = whyOver_.emplace(event.adKey, "").second;
    skip("adBreakDidStart");
    if (isNext(event)) {
      leave("another ad, " + event.adKey + ", had started");
      current_ = event.adKey;
      const auto* ad = document_.adWithKey(event.adKey);
      result_.ads[static_cast<std::size_t>(ad - document_.ads.data())] = heard_[next_++].ad;
    } else if (isFirst) {
      leave("the start of " + event.adKey + ", which gives no ad, had ended it");
    }
    while (skip("didUpdateCuepoints")) continue;
  }

  void matchOther(const StreamDocument::Event& event) {
    if (isNext(event)) {
      ++next_;
      if (skip("adBreakDidEnd")) leave("its break had ended with a complete");
      return;
    }
    const auto why = whyOver_.find(event.adKey);
    result_.lost.push_back({event, why == whyOver_.end() ? "it has not started" : why->second});
  }

  const StreamDocument& document_;
  const std::vector<Heard>& heard_;
  std::size_t next_;
  std::string current_;
  /// The ads that were to start, and why each is no longer the current one.
  std::map<std::string, std::string, std::less<>> whyOver_;
  PlayThrough result_;
};

}  // namespace

PlayThrough playThrough(const JSONValue& json, const StreamDocument& document,
                        const ClientFacts& facts) {
  const ClientPlatform platform(facts);
  const auto answer = simulation::StreamInitAnswerBuilder::vod();
  platform.answerNext(answer.build());
  platform.server().answer(*answer.timeEventsURL, {200, json.serialize()});
  const ClientSession session(platform);

  const auto& heard = session.delegate->events();
  EventMatcher matcher(document, heard);
  std::vector<std::shared_ptr<XELCuepoint>> cuepoints;
  for (const auto& event : heard) {
    if (event.name == "didUpdateCuepoints") cuepoints = event.cuepoints;
  }
  for (const auto& second : document.seconds) {
    if (!second.second || *second.second < 0) continue;
    session.display->reportProgress(static_cast<double>(*second.second));
    platform.loop().runUntilIdle();
    matcher.match(second);
  }
  auto result = matcher.take();
  result.cuepoints = std::move(cuepoints);
  return result;
}

}  // namespace xel::inspect
