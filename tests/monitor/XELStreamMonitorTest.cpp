#include <algorithm>
#include <set>

#include "support/Session.h"
#include "support/StreamRules.h"

namespace xel::test {
namespace {

TEST(Overrun, EndsTheBreakAtOneSecondAfterTheLastCountdown) {
  const struct {
    const char* of;
    const char* earlierAd;
    const char* breakDuration;
    std::vector<double> ticks;
    const char* expected;
  } rows[] = {{"ad", "0", "60", {99, 100, 105, 110.75, 111, 111.5}, "5 -0.75 -1 end"},
              {"break", "0", "5", {100, 105.75, 106, 107}, "4.25 4 end"},
              {"break with the ads before", "4", "9", {100, 104.75, 105, 106, 107}, "5.25 5 4 end"},
              {"break of unknown duration", "0", "null", {100, 100.5, 101}, "9.5 9 end"},
              {"nothing yet, after seeks", "0", "10", {100, 105, 90, 110.5}, "5 20 -0.5"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.of);
    Session session;
    session.openVOD(R"({"times": {"100": [{"type": "start", "ad": "b"}]}, "ads": {
        "a": {"break": "x", "duration": )" +
                    std::string(row.earlierAd) + R"(, "position": 1},
        "b": {"break": "x", "duration": 10, "position": 2, "vast": "<VAST><Ad/></VAST>"}},
        "breaks": {"x": {"duration": )" +
                    row.breakDuration + "}}}");
    session.progress(row.ticks);
    std::string heard;
    for (const auto& event : session.host->events()) {
      if (event.name == "didCountdownTo")
        heard += event.line.substr(std::string("didCountdownTo b").size());
      if (event.name == "adBreakDidEnd") heard += " end";
    }
    EXPECT_EQ(heard, " " + std::string(row.expected));
  }
}

TEST(Bookkeeping, TellsWhetherACompleteEndsTheBreak) {
  const struct {
    const char* position;
    const char* breaks;
    bool ends;
  } rows[] = {{R"(, "position": 2)", R"("x": {"ads": 2})", true},
              {R"(, "position": 1)", R"("x": {"ads": 2})", false},
              {"", R"("x": {"ads": 2})", true},
              {R"(, "position": 1e40)", R"("x": {"ads": 2})", true},
              {R"(, "position": 1)", R"("x": {})", true},
              {R"(, "position": 1)", R"("x": {"ads": true})", true},
              {R"(, "position": 1)", "", true}};
  for (const auto& [position, breaks, ends] : rows) {
    SCOPED_TRACE(std::string(position) + breaks);
    Session session;
    session.openVOD(
        R"({"times": {"0": [{"type": "start", "ad": "a"}, {"type": "complete", "ad": "a"}]},
            "ads": {"a": {"break": "x", "vast": "<VAST><Ad/></VAST>")" +
        std::string(position) + R"(}}, "breaks": {)" + breaks + "}}");
    session.progress({0});
    EXPECT_EQ(session.host->events().back().line, ends ? "adBreakDidEnd x" : "adDidComplete a");
  }
}

TEST(UnusableVast, IsLoggedOnceAndLeavesNoAd) {
  for (const char* vast : {"", R"(, "vast": "")", R"(, "vast": 3)", R"(, "vast": "<VAST/>")"}) {
    SCOPED_TRACE(vast);
    Session session;
    session.openVOD(R"({"times": {"0": [{"type": "start", "ad": "a"}],
        "1": [{"type": "start", "ad": "bad"}, {"type": "midpoint", "ad": "bad"},
              {"type": "complete", "ad": "bad"}, {"type": "midpoint", "ad": "a"}]},
        "breaks": {"x": {"ads": 1, "duration": 9}},
        "ads": {"a": {"break": "x", "duration": 9, "vast": "<VAST><Ad/></VAST>"},
                "bad": {"position": 1)" +
                    std::string(vast) + "}}}");
    session.happened();
    session.countdowns = true;
    session.progress({0, 1, 2, 1, 30});
    EXPECT_EQ(session.happened(), (Lines{"adDidStart a", "didCountdownTo a 8"}));
    session.expectedLog = {"Internal Error: No tracking pings for current ad."};
  }
}

TEST_F(SessionTest, GivesAnAdWhatDocumentAndVastSayOfIt) {
  openVOD(R"({"times": {"7": [{"type": "start", "ad": "b"}]}, "ads": {
      "a": {"break": "x", "position": 1, "duration": 2.5},
      "b": {"break": "x", "position": 2, "duration": 10.1, "vast": ")"
          "<VAST><Ad id='one'><InLine><Creatives><Creative id='non'><NonLinear/></Creative>"
          "<Creative id='first'><Linear/></Creative><Creative id='second'><Linear/></Creative>"
          R"(</Creatives></InLine></Ad><Ad id='two'/></VAST>"}},
      "breaks": {"x": {"ads": 2, "duration": 12.6}},
      "cuepoints": [{"start": 2, "end": 3}, {"start": 4.5, "end": 17}]})");
  progress({7.25});
  const auto& ad = host->events().back().ad;
  ASSERT_TRUE(ad && ad->selectedCreative());
  EXPECT_EQ(ad->adID(), "one");
  EXPECT_EQ(ad->adPosition(), 2);
  EXPECT_EQ(ad->duration(), 10.1f);
  EXPECT_EQ(ad->adStartTime(), 7.25);
  EXPECT_EQ(ad->selectedCreative()->adID(), "first");
  EXPECT_EQ(ad->adBreakInfo()->adBreakKey(), "x");
  EXPECT_EQ(ad->adBreakInfo()->totalAds(), 2);
  EXPECT_EQ(ad->adBreakInfo()->duration(), 12.6f);
  EXPECT_EQ(ad->adBreakInfo()->adBreakIndex(), 1);
  EXPECT_EQ(ad->adBreakInfo()->timeOffset(), 4.5);
}

/// A host whose display reports from within a seek, and which seeks in the middle of a report.
TEST(SeekInAReport, LeavesEachAdItsOwnEventsOnce) {
  for (const char* report :
       {"adBreakDidStart", "adDidStart", "didCountdownTo", "adDidComplete", "adBreakDidEnd"}) {
    SCOPED_TRACE(report);
    StreamRules rules;
    Session session;
    auto document = StreamInfoBuilder::vod();
    document.addBreak("one", 10).addAd("a", 4).addBreak("two", 40).addAd("b", 4);
    session.openVOD(document.build());
    bool sought = false;
    session.host->onEvent = [&](const RecordingDelegate::Event& event) {
      EXPECT_EQ(rules.follow(event), "") << event.line;
      if (event.name == report && !std::exchange(sought, true)) session.progress({11.5, 40});
    };
    session.progress({10, 13, 14, 41, 42, 43});
    const Lines lines = session.host->lines(RecordingDelegate::Countdowns::leftOut);
    for (const char* once : {"adBreakDidStart two (1 ads, 4 s)", "adDidStart b", "adDidComplete b",
                             "adBreakDidEnd two"}) {
      EXPECT_EQ(std::count(lines.begin(), lines.end(), once), 1) << once;
    }
    EXPECT_LE(std::count(lines.begin(), lines.end(), "adBreakDidEnd one"), 1);
    std::set<std::string> pinged;
    for (const auto& ping : session.server().pings()) {
      EXPECT_TRUE(pinged.insert(ping.request.url).second) << ping.request.url;
    }
  }
}

}  // namespace
}  // namespace xel::test
