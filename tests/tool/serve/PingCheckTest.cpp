#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "serve/PingCheck.h"

namespace xel::serve {
namespace {

/// Two ads, "a" and "b"; the URLs of "a" are as awkward as they come.
SessionRecord session() {
  const std::string document = R"({
    "breaks": {"x": {"ads": 2}},
    "tags": {"1": {"ad": "a", "type": "Start"}, "2": {"ad": "a", "type": "complete"},
             "3": {"ad": "b", "type": "start"}, "4": {"ad": "a", "type": "mute"}},
    "ads": {"b": {"vast": "<VAST><Ad><InLine><Impression>https://h/track/1/b</Impression></InLine></Ad></VAST>"},
            "a": {"vast": "<VAST><Ad><InLine>
      <Impression>\n <![CDATA[https://h/track/1/a?v=[SDKV]&u=%C3%A9]]>\n</Impression>
      <TrackingEvents><Tracking event='start'>https://elsewhere/x</Tracking></TrackingEvents>
      <Creatives>
        <Creative><CompanionAds><Companion><TrackingEvents><Tracking event='start'>https://h/track/1/no</Tracking>
        </TrackingEvents></Companion></CompanionAds></Creative>
        <Creative><Linear><TrackingEvents>
          <Tracking event='complete'>https://h/track/1/pcs/view?xai=1&amp;sig=2&amp;x=1&amp;x=2&amp;on=ads.example</Tracking>
          <Tracking event='mute'>https://h/track/1/mute</Tracking></TrackingEvents></Linear></Creative>
        <Creative><Linear><TrackingEvents><Tracking event='start'>https://h/track/1/second</Tracking>
        </TrackingEvents></Linear></Creative>
      </Creatives></InLine></Ad></VAST>"}}})";
  std::string oneLine;
  for (const char character : document) oneLine += character == '\n' ? ' ' : character;
  return {7, "live", oneLine, "/track/1/", {"t.1/app", {"ads.example", ""}, "https://h"}};
}

const std::string startA = "/track/1/a?u=%c3%A9&v=t.1";
const std::string completeA =
    "/track/1/pcs/view?on=ads.example&sdkv=t.1/app&sig=2&ssss=oxel&x=2&xai=1";

/// Requests a second apart; one that ends with "!" is reset, one with ">" redirected.
std::vector<Ledger::Entry> ledgerOf(const std::vector<std::string>& targets) {
  std::vector<Ledger::Entry> ledger;
  for (auto target : targets) {
    Ledger::Entry entry{.method = "GET", .status = 204, .time = double(ledger.size())};
    if (target.back() == '!') entry.fault = "ping=reset", entry.status = std::nullopt;
    if (target.back() == '>') entry.fault = "ping=redirect-loop", entry.status = 307;
    if (!entry.fault.empty()) target.pop_back();
    entry.target = target;
    ledger.push_back(entry);
  }
  return ledger;
}

TEST(PingCheck, TellsEachDifference) {
  const struct {
    const char* behaviour;
    Expectation expectation;
    std::vector<std::string> received;
    std::vector<std::string> differences;
  } cases[] = {
      {"all is well", Expectation::complete, {startA, completeA, "/track/1/b", "/ledger"}, {}},
      {"missing",
       Expectation::complete,
       {startA, "/track/1/b"},
       {"ad a, complete: expected 1, received 0 (missing): " + completeA}},
      {"an ad that has not started", Expectation::started, {"/track/1/b"}, {}},
      {"a ping without its start",
       Expectation::started,
       {completeA},
       {"ad a, complete: expected 0, received 1 (the ad has not started): " + completeA}},
      {"an ad left early",
       Expectation::started,
       {startA},
       {"ad a, complete: expected 1, received 0 (missing): " + completeA}},
      {"twice, and unknown",
       Expectation::complete,
       {startA, completeA, "/track/1/b", "/track/1/b", "/track/1/no"},
       {"ad b, start: expected 1, received 2 (twice): /track/1/b",
        "expected 0, received 1 (unknown URL): /track/1/no"}},
      {"out of order",
       Expectation::complete,
       {completeA, startA, "/track/1/b"},
       {"ad a, start: received after complete (out of order): /track/1/a?u=\xC3\xA9&v=t.1"}},
      {"sent anew after a reset or a redirect",
       Expectation::complete,
       {startA + "!", startA + "!", startA, completeA + ">", completeA, "/track/1/b!"},
       {}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.behaviour);
    auto expected = each.differences;
    for (auto& line : expected) line = "session 7: " + line;
    const auto verdict = checkPings({session()}, ledgerOf(each.received), each.expectation);
    EXPECT_EQ(verdict.differences, expected);
  }
}

TEST(PingCheck, FailsWhereThereIsNothingToCheck) {
  auto tooFew = session();
  tooFew.document.replace(tooFew.document.find(": 2}"), 4, ": 3}");
  auto verdict =
      checkPings({tooFew}, ledgerOf({startA, completeA, "/track/1/b"}), Expectation::complete);
  EXPECT_EQ(verdict.sessions[0],
            "session 7 (live): 2 ads, 2 started; 3 pings expected, 3 received; "
            "1 ping to other servers not seen");
  EXPECT_EQ(verdict.differences[0],
            "session 7: its document's breaks hold 3 ads, of which 2 start");
  auto silent = session();
  silent.document.clear();
  verdict = checkPings({silent}, ledgerOf({"/track/9/x"}), Expectation::complete);
  EXPECT_EQ(verdict.differences[0], "session 7: no stream info document has reached the player");
  EXPECT_EQ(verdict.differences[1], "no session: expected 0, received 1 (unknown URL): /track/9/x");
  EXPECT_EQ(checkPings({}, {}, Expectation::started).differences[0], "no session was opened");
}

}  // namespace
}  // namespace xel::serve
