#include "serve/PingCheck.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "common/PrintableText.h"

namespace xel::serve {
namespace {

/// When each ping was received, by `comparableTarget`.
using Receipts = std::map<std::string, std::vector<double>>;

bool isSentAnew(const Ledger::Entry& entry) {
  const bool isRedirected = entry.status && *entry.status >= 300 && *entry.status < 400;
  return isRedirected || (!entry.status && entry.fault.find("=reset") != std::string::npos);
}

Receipts receiptsIn(const std::vector<Ledger::Entry>& ledger) {
  Receipts receipts;
  std::set<std::string> awaited;
  for (const auto& entry : ledger) {
    if (!entry.target.starts_with("/track/")) continue;
    auto target = comparableTarget(entry.target);
    const bool isRepeat = awaited.erase(target) != 0;
    if (isSentAnew(entry)) awaited.insert(target);
    if (!isRepeat) receipts[std::move(target)].push_back(entry.time);
  }
  return receipts;
}

std::string countText(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// One session's promises against what was received of them.
class SessionCheck {
 public:
  SessionCheck(const SessionRecord& session, Expectation expectation, Receipts& receipts,
               PingVerdict& verdict)
      : session_(session),
        isComplete_(expectation == Expectation::complete),
        promise_(promiseOf(JSONValue::parse(session.document).value, session.sender)),
        receipts_(receipts),
        verdict_(verdict) {}

  void run() {
    if (isComplete_) checkDocument();
    findStartedAds();
    for (const auto& ping : promise_.pings) {
      if (mustCome(ping)) ++expected_[ping.target];
    }
    for (std::size_t i = 0; i < promise_.pings.size(); ++i) {
      checkCount(promise_.pings[i]);
      checkOrder(i);
    }
    tell();
    for (const auto& ping : promise_.pings) receipts_.erase(ping.target);
    checkRest();
  }

 private:
  void differ(const std::string& text) {
    verdict_.differences.push_back("session " + std::to_string(session_.number) + ": " +
                                   printable(text));
  }
  void differ(const PromisedPing& ping, const std::string& text) {
    differ("ad " + ping.ad + ", " + ping.event + ": " + text + ": " + ping.target);
  }
  const std::vector<double>& receiptsOf(const PromisedPing& ping) const {
    static const std::vector<double> none;
    const auto found = receipts_.find(ping.target);
    return found == receipts_.end() ? none : found->second;
  }
  bool mustCome(const PromisedPing& ping) const {
    return isComplete_ || startedAds_.count(ping.ad) != 0;
  }

  void checkDocument() {
    if (session_.document.empty()) return differ("no stream info document has reached the player");
    if (promise_.pings.empty()) differ("its document promises no ping to this server");
    if (promise_.held != promise_.started) {
      differ("its document's breaks hold " + countText(promise_.held, "ad") + ", of which " +
             std::to_string(promise_.started) + " start");
    }
  }

  /// An ad whose start nobody here can see counts from its first ping.
  void findStartedAds() {
    std::set<std::string_view> adsWithStart;
    for (const auto& ping : promise_.pings) {
      if (ping.event == "start") adsWithStart.insert(ping.ad);
      const bool tells = ping.event == "start" || adsWithStart.count(ping.ad) == 0;
      if (tells && !receiptsOf(ping).empty()) startedAds_.insert(ping.ad);
    }
  }

  void checkCount(const PromisedPing& ping) {
    if (!checked_.insert(ping.target).second) return;
    const std::size_t received = receiptsOf(ping).size();
    const std::size_t expected = expected_[ping.target];
    if (received == expected) return;
    const char* const why = expected == 0         ? "the ad has not started"
                            : received < expected ? "missing"
                            : received == 2       ? "twice"
                                                  : "too often";
    differ(ping, "expected " + std::to_string(expected) + ", received " + std::to_string(received) +
                     " (" + why + ")");
  }

  /// The pings of an ad stand together, in the order of its events.
  void checkOrder(std::size_t place) {
    const auto& ping = promise_.pings[place];
    const auto& times = receiptsOf(ping);
    if (times.empty()) return;
    for (std::size_t i = place + 1; i < promise_.pings.size(); ++i) {
      const auto& later = promise_.pings[i];
      if (later.ad != ping.ad) return;
      if (later.event == ping.event || receiptsOf(later).empty()) continue;
      if (receiptsOf(later).front() + unorderedSeconds >= times.front()) continue;
      return differ(ping, "received after " + later.event + " (out of order)");
    }
  }

  void tell() {
    std::set<std::string_view> ads;
    std::set<std::string_view> targets;
    std::size_t received = 0;
    for (const auto& ping : promise_.pings) {
      ads.insert(ping.ad);
      if (targets.insert(ping.target).second) received += receiptsOf(ping).size();
    }
    std::size_t expected = 0;
    for (const auto& [target, count] : expected_) expected += count;
    auto line = "session " + std::to_string(session_.number) + " (" + session_.kind +
                "): " + countText(ads.size(), "ad") + ", " + std::to_string(startedAds_.size()) +
                " started; " + countText(expected, "ping") + " expected, " +
                std::to_string(received) + " received";
    if (promise_.elsewhere != 0) {
      line += "; " + countText(promise_.elsewhere, "ping") + " to other servers not seen";
    }
    verdict_.sessions.push_back(std::move(line));
  }

  void checkRest() {
    for (auto it = receipts_.lower_bound(session_.trackingPath);
         it != receipts_.end() && it->first.starts_with(session_.trackingPath);
         it = receipts_.erase(it)) {
      differ("expected 0, received " + std::to_string(it->second.size()) +
             " (unknown URL): " + it->first);
    }
  }

  const SessionRecord& session_;
  const bool isComplete_;
  const Promise promise_;
  Receipts& receipts_;
  PingVerdict& verdict_;
  std::set<std::string> startedAds_;
  std::map<std::string, std::size_t> expected_;
  std::set<std::string> checked_;
};

}  // namespace

PingVerdict checkPings(const std::vector<SessionRecord>& sessions,
                       const std::vector<Ledger::Entry>& ledger, Expectation expectation) {
  PingVerdict verdict;
  auto receipts = receiptsIn(ledger);
  for (const auto& session : sessions) {
    SessionCheck(session, expectation, receipts, verdict).run();
  }
  for (const auto& [target, times] : receipts) {
    verdict.differences.push_back("no session: expected 0, received " +
                                  std::to_string(times.size()) +
                                  " (unknown URL): " + printable(target));
  }
  if (sessions.empty()) verdict.differences.emplace_back("no session was opened");
  return verdict;
}

}  // namespace xel::serve
