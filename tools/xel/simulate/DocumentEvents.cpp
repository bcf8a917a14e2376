#include "simulate/DocumentEvents.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "common/PrintableText.h"

namespace xel::simulate {
namespace {

constexpr std::array<std::string_view, 5> eventNames = {"start", "firstquartile", "midpoint",
                                                        "thirdquartile", "complete"};

std::string quoted(const std::string& text) { return '"' + printable(text) + '"'; }

}  // namespace

void DocumentEvents::add(const StreamDocument& document) {
  std::map<Identity, std::size_t> seen;
  const auto addEvent = [&](const std::string& under, std::optional<std::int64_t> second,
                            const StreamDocument::Event& event) {
    Identity identity{under, event.type, event.adKey, 0};
    std::get<std::size_t>(identity) = seen[identity]++;
    const auto [index, isNew] = indexes_.try_emplace(std::move(identity), events_.size());
    if (isNew) {
      events_.push_back(
          {.under = under, .second = second, .type = event.type, .adKey = event.adKey});
    }
    present_[under].push_back(index->second);
  };
  if (isLive_) {
    for (const auto& [text, event] : document.tags) addEvent(text, std::nullopt, event);
  } else {
    for (const auto& second : document.seconds) {
      for (const auto& event : second.events) addEvent(second.key, second.second, event);
    }
  }
}

void DocumentEvents::documentArrived(const StreamDocument& document) {
  hasDocument_ = true;
  present_.clear();
  add(document);
  hasVast_.clear();
  for (const auto& ad : document.ads) hasVast_[ad.key] = ad.vast && !ad.vast->empty();
}

void DocumentEvents::beginProgress(double time) {
  hasCompletedNow_ = false;
  const auto second = static_cast<std::int64_t>(std::floor(time));
  if (!isLive_ && second != lastSecond_) {
    jump(second, time);
    lastSecond_ = second;
    meet(std::to_string(second));
  }
  lastTime_ = time;
}

void DocumentEvents::beginText(const std::string& text) {
  hasCompletedNow_ = false;
  if (!isLive_) return;
  if (!present_.contains(text)) textsWithoutEvent_.push_back(text);
  meet(text);
}

void DocumentEvents::meet(const std::string& under) {
  if (const auto found = present_.find(under); found != present_.end()) met_ = found->second;
}

void DocumentEvents::jump(std::int64_t to, double time) {
  if (to <= lastSecond_ + 1) return;
  for (auto& event : events_) {
    const bool isBetween = event.second && *event.second > lastSecond_ && *event.second < to;
    const bool wasMet = event.reason != "not-reached" && event.reason != "jumped-over";
    if (!isBetween || event.hasFired || wasMet) continue;
    event.reason = "jumped-over";
    event.explanation =
        "its second was jumped over, from " + clockText(lastTime_) + " to " + clockText(time);
  }
}

void DocumentEvents::adEvent(std::string_view type, const std::string& adKey) {
  if (type == "start") {
    leave("not-current", "another ad, " + quoted(adKey) + ", had started");
    requested_.insert(adKey);
    left_.erase(adKey);
    currentAd_ = adKey;
  }
  hasCompletedNow_ = hasCompletedNow_ || type == "complete";
  for (const auto index : met_) {
    auto& event = events_[index];
    if (event.hasFired || event.type != type || event.adKey != adKey) continue;
    event.hasFired = true;
    return;
  }
}

void DocumentEvents::breakEnded() {
  if (hasCompletedNow_) {
    leave("completed", "the ad had completed and ended its break");
  } else {
    leave("overrun", "ad or break had overrun by a second, which ended the break");
  }
}

void DocumentEvents::leave(std::string_view reason, std::string explanation) {
  if (!currentAd_.empty()) left_[currentAd_] = {reason, std::move(explanation)};
  currentAd_.clear();
}

void DocumentEvents::end() {
  for (const auto index : met_) {
    if (!events_[index].hasFired) explain(events_[index]);
  }
  met_.clear();
}

void DocumentEvents::explain(DocumentEvent& event) {
  if (std::find(eventNames.begin(), eventNames.end(), event.type) == eventNames.end()) {
    event.reason = "unknown-event";
    event.explanation = "no event has this name";
  } else if (event.adKey.empty()) {
    event.reason = "no-ad";
    event.explanation = "it names no ad";
  } else if (event.type == "start") {
    explainStart(event);
  } else if (const auto left = left_.find(event.adKey); left != left_.end()) {
    std::tie(event.reason, event.explanation) = left->second;
  } else {
    event.reason = "not-started";
    event.explanation = "the ad had not started, so it was not current";
  }
}

void DocumentEvents::explainStart(DocumentEvent& event) {
  if (!requested_.insert(event.adKey).second) {
    event.reason = "already-started";
    event.explanation = "the ad's start had been met before, and an ad starts once";
    return;
  }
  leave("not-current", "the start of " + quoted(event.adKey) + ", which gave no ad, had ended it");
  if (const auto ad = hasVast_.find(event.adKey); ad == hasVast_.end()) {
    event.reason = "unknown-ad";
    event.explanation = "the document has no such ad";
  } else {
    event.reason = "no-vast";
    event.explanation = ad->second ? "the ad's VAST gives no ad" : "the ad has no VAST";
  }
}

std::vector<DocumentEvent> DocumentEvents::all() const {
  auto known = *this;
  if (!hasDocument_) known.add(given_);
  for (auto& event : known.events_) {
    if (event.hasFired || event.reason != "not-reached") continue;
    const auto& texts = textsWithoutEvent_;
    if (!hasDocument_) {
      event.reason = "no-document";
      event.explanation = "the document did not arrive";
    } else if (std::find(texts.begin(), texts.end(), event.under) != texts.end()) {
      event.reason = "before-document";
      event.explanation = "its text came before the document that names it";
    } else if (isLive_) {
      event.explanation = "its text never came";
    } else if (!event.second) {
      event.reason = "no-second";
      event.explanation = "what it stands under is not a whole number of seconds";
    } else {
      event.explanation = "playback did not come to its second";
    }
  }
  return std::move(known.events_);
}

std::vector<std::string> DocumentEvents::unknownTexts() const {
  std::set<std::string_view> known;
  for (const auto& event : events_) known.insert(event.under);
  std::vector<std::string> unknown;
  for (const auto& text : textsWithoutEvent_) {
    if (!known.contains(text)) unknown.push_back(text);
  }
  return unknown;
}

}  // namespace xel::simulate
