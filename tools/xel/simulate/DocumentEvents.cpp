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

void DocumentEvents::documentKnown(const StreamDocument& document) {
  const auto add = [this](DocumentEvent event, std::size_t occurrence) {
    auto& known = indexes_[event.under];
    if (occurrence < known.size()) return;
    known.push_back(events_.size());
    events_.push_back(std::move(event));
  };
  for (const auto& [text, event] : isLive_ ? document.tags : std::vector<StreamDocument::Tag>()) {
    add({.under = text, .type = event.type, .adKey = event.adKey}, 0);
  }
  for (const auto& [key, path, second, events] :
       isLive_ ? std::vector<StreamDocument::Second>() : document.seconds) {
    for (std::size_t i = 0; i < events.size(); ++i) {
      add({.under = key, .second = second, .type = events[i].type, .adKey = events[i].adKey}, i);
    }
  }
}

void DocumentEvents::documentArrived(const StreamDocument& document) {
  documentKnown(document);
  hasDocument_ = true;
  present_.clear();
  for (const auto& tag : document.tags) present_.insert(tag.text);
  for (const auto& second : document.seconds) present_.insert(second.key);
  knownAds_.clear();
  adsWithVast_.clear();
  for (const auto& ad : document.ads) {
    knownAds_.insert(ad.key);
    if (ad.vast && !ad.vast->empty()) adsWithVast_.insert(ad.key);
  }
}

void DocumentEvents::beginProgress(double time) {
  const auto second = static_cast<std::int64_t>(std::floor(time));
  if (!isLive_ && second != lastSecond_) {
    jump(lastSecond_, second, time);
    lastSecond_ = second;
    meet(std::to_string(second));
  }
  lastTime_ = time;
}

void DocumentEvents::beginText(const std::string& text) {
  if (!isLive_) return;
  if (!present_.contains(text)) textsWithoutEvent_.push_back(text);
  meet(text);
}

void DocumentEvents::meet(const std::string& under) {
  const auto found = indexes_.find(under);
  if (found != indexes_.end() && present_.contains(under)) met_ = found->second;
}

void DocumentEvents::jump(std::int64_t from, std::int64_t to, double time) {
  for (auto& event : events_) {
    const bool isBetween = event.second && *event.second > from && *event.second < to;
    const bool wasMet = event.reason != "not-reached" && event.reason != "jumped-over";
    if (!isBetween || event.hasFired || wasMet) continue;
    event.reason = "jumped-over";
    event.explanation =
        "its second was jumped over, from " + clockText(lastTime_) + " to " + clockText(time);
  }
}

void DocumentEvents::adEvent(std::string_view type, const std::string& adKey) {
  if (type == "start") {
    started_.insert(adKey);
    currentAd_ = adKey;
  }
  if (type == "complete") completed_.insert(adKey);
  for (const auto index : met_) {
    auto& event = events_[index];
    if (event.hasFired || event.type != type || event.adKey != adKey) continue;
    event.hasFired = true;
    return;
  }
}

void DocumentEvents::breakEnded() {
  if (!completed_.contains(currentAd_)) overrun_.insert(currentAd_);
  currentAd_.clear();
}

void DocumentEvents::end() {
  for (const auto index : met_) {
    if (!events_[index].hasFired) explain(events_[index]);
  }
  met_.clear();
}

void DocumentEvents::explain(DocumentEvent& event) {
  const auto say = [&event](std::string_view reason, std::string explanation) {
    event.reason = reason;
    event.explanation = std::move(explanation);
  };
  if (std::find(eventNames.begin(), eventNames.end(), event.type) == eventNames.end()) {
    return say("unknown-event", "no event has this name");
  }
  if (event.adKey.empty()) return say("no-ad", "it names no ad");
  if (event.type == "start") {
    if (started_.contains(event.adKey)) {
      return say("already-started", "the ad had been started before, and an ad starts once");
    }
    currentAd_.clear();
    if (!knownAds_.contains(event.adKey)) return say("unknown-ad", "the document has no such ad");
    const bool hasVast = adsWithVast_.contains(event.adKey);
    return say("no-vast", hasVast ? "the ad's VAST gives no ad" : "the ad has no VAST");
  }
  if (!started_.contains(event.adKey)) {
    return say("not-started", "the ad had not started, so it was not current");
  }
  if (overrun_.contains(event.adKey)) {
    return say("overrun", "the break had overrun by a second, which ended it before");
  }
  if (completed_.contains(event.adKey)) {
    return say("completed", "the ad had completed, so it was not current any more");
  }
  say("not-current", currentAd_.empty() ? "the ad was not current any more"
                                        : "the ad was not current: " + quoted(currentAd_) + " was");
}

std::vector<DocumentEvent> DocumentEvents::all() const {
  auto events = events_;
  for (auto& event : events) {
    if (event.hasFired || event.reason != "not-reached") continue;
    const auto& texts = textsWithoutEvent_;
    if (std::find(texts.begin(), texts.end(), event.under) != texts.end()) {
      event.reason = "before-document";
      event.explanation = "its text came before the document that names it";
    } else if (!hasDocument_) {
      event.reason = "no-document";
      event.explanation = "the document did not arrive";
    } else if (isLive_) {
      event.explanation = "its text never came";
    } else if (!event.second) {
      event.reason = "no-second";
      event.explanation = "what it stands under is not a whole number of seconds";
    } else {
      event.explanation = "playback did not come to its second";
    }
  }
  return events;
}

std::vector<std::string> DocumentEvents::unknownTexts() const {
  std::vector<std::string> unknown;
  for (const auto& text : textsWithoutEvent_) {
    if (!indexes_.contains(text)) unknown.push_back(text);
  }
  return unknown;
}

}  // namespace xel::simulate
