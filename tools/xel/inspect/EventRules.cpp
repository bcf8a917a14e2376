#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

constexpr std::array<std::string_view, 5> knownTypes = {"start", "firstquartile", "midpoint",
                                                        "thirdquartile", "complete"};

class EventChecker {
 public:
  EventChecker(const ClientView& view, Findings& findings)
      : view_(view), document_(view.document), findings_(findings) {}

  void check() {
    if (!document_.tags.empty() && !document_.seconds.empty()) {
      findings_.add("both-tags-and-times", "$",
                    "The document has both \"tags\" and \"times\"; a stream reads one of them.");
    }
    for (const auto& second : document_.seconds) checkSecond(second);
    for (const auto& tag : document_.tags) checkTag(tag);
    for (const auto& ad : document_.ads) checkAd(ad);
    if (!view_.playThrough) return;
    for (const auto& lost : view_.playThrough->lost) {
      const auto* ad = document_.adWithKey(lost.event.adKey);
      if (!ad || !isStarted(lost.event.adKey) || ad->vast.value_or("").empty()) continue;
      findings_.add("event-lost", lost.event.path,
                    "The " + lost.event.type + " of " + quoted(lost.event.adKey) +
                        " is neither told nor pinged, because " + lost.reason + ".");
    }
  }

 private:
  bool isStarted(const std::string& adKey) const {
    const auto types = reported_.find(adKey);
    return types != reported_.end() && types->second.count("start") > 0;
  }

  void checkSecond(const StreamDocument::Second& second) {
    if (!second.second || *second.second < 0) {
      findings_.add("second-malformed", second.path,
                    "No second of a stream is written as " + quoted(second.key) + "; its " +
                        counted(second.events.size(), "event") + " never happen" +
                        (second.events.size() == 1 ? "s." : "."));
      return;
    }
    for (const auto& event : second.events) {
      checkEvent(event, static_cast<double>(*second.second));
    }
  }

  void checkTag(const StreamDocument::Tag& tag) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    if (!tag.text.empty() && (isBlank(tag.text.front()) || isBlank(tag.text.back()))) {
      findings_.add("tag-white-space", tag.event.path,
                    "The tag begins or ends with white space, which the stream's metadata must "
                    "have too.");
    }
    checkEvent(tag.event, {});
  }

  void checkEvent(const StreamDocument::Event& event, std::optional<double> second) {
    if (event.type.empty() || event.adKey.empty()) {
      findings_.add("event-incomplete", event.path,
                    std::string("The event names no ") + (event.adKey.empty() ? "ad" : "type") +
                        " and is ignored.");
      return;
    }
    const auto* type = std::find(knownTypes.begin(), knownTypes.end(), event.type);
    if (type == knownTypes.end()) {
      findings_.add("event-unknown-type", event.path,
                    event.type == "creativeview"
                        ? std::string("The event is ignored; creativeview goes out with the start.")
                        : "The type " + quoted(event.type) +
                              " is not known, so the event is "
                              "ignored.");
      return;
    }
    const auto* ad = document_.adWithKey(event.adKey);
    if (!ad) {
      findings_.add(
          "event-unknown-ad", event.path,
          "The document has no ad " + quoted(event.adKey) +
              (event.type == "start" ? "; its start gives no ad and ends the one before it."
                                     : ", so the event is ignored."));
      return;
    }
    const bool isNew = reported_[event.adKey].insert(event.type).second;
    if (!isNew && event.type == "start") {
      findings_.add("start-repeated", event.path,
                    "The ad " + quoted(event.adKey) + " is started elsewhere too; it starts once.");
    } else if (!isNew) {
      findings_.add("event-repeated", event.path,
                    "The " + event.type + " of " + quoted(event.adKey) +
                        " is reported elsewhere too; each time it is told and pinged.");
    }
    if (second) checkOrder(event, *ad, type, *second);
  }

  void checkOrder(const StreamDocument::Event& event, const StreamDocument::Ad& ad,
                  const std::string_view* type, double second) {
    auto& latest = latest_[event.adKey];
    if (event.type != "start" && latest && type < latest) {
      findings_.add("event-out-of-order", event.path,
                    "The " + event.type + " of " + quoted(event.adKey) + " comes behind its " +
                        std::string(*latest) + ".");
    }
    if (!latest || type > latest) latest = type;
    const double end = ad.start.value_or(0) + ad.duration.value_or(0);
    if (ad.start && ad.duration.value_or(0) > 0 && second > end && second < end + 1) {
      findings_.add("event-after-end", event.path,
                    "The " + event.type + " of " + quoted(event.adKey) + " comes at " +
                        numberText(second) + " s, after the ad's end at " + numberText(end) +
                        " s.");
    }
  }

  void checkAd(const StreamDocument::Ad& ad) {
    if (!isStarted(ad.key)) {
      findings_.add("ad-never-starts", ad.path,
                    "No second or tag starts the ad, so the host never hears of it and nothing is "
                    "pinged.");
      return;
    }
    if (ad.vast.value_or("").empty()) return;
    std::vector<std::string> missing;
    for (const auto type : knownTypes) {
      if (reported_[ad.key].count(type) == 0) missing.emplace_back(type);
    }
    if (missing.empty()) return;
    const auto& pings = view_.ads[static_cast<std::size_t>(&ad - document_.ads.data())].pings;
    const auto unsent = std::count_if(pings.begin(), pings.end(), [&](const PingView& ping) {
      return std::find(missing.begin(), missing.end(), ping.event) != missing.end();
    });
    findings_.add("event-missing", ad.path,
                  "Nothing reports the ad's " + listed(missing) +
                      ", so the host does not hear of " + (missing.size() == 1 ? "it" : "them") +
                      (unsent == 0 ? std::string(".")
                                   : ", and " + counted(static_cast<std::size_t>(unsent), "ping") +
                                         (unsent == 1 ? " is not sent." : " are not sent.")));
  }

  const ClientView& view_;
  const StreamDocument& document_;
  Findings& findings_;
  /// Ad key to the types of its events that are looked up.
  std::map<std::string, std::set<std::string, std::less<>>> reported_;
  /// Ad key to the latest in `knownTypes` of its events so far.
  std::map<std::string, const std::string_view*> latest_;
};

}  // namespace

void checkEvents(const ClientView& view, Findings& findings) {
  EventChecker(view, findings).check();
}

}  // namespace xel::inspect
