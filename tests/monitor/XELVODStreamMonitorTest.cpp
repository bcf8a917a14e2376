#include <limits>

#include "support/Session.h"

namespace xel::test {
namespace {

using VODStreamMonitor = SessionTest;

TEST(Ticks, HandleTheSecondsThatTheyReach) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::string begin = "adBreakDidStart x (2 ads, 8 s)";
  const std::string start = "adDidStart a";
  const std::string quartile = "adDidCrossFirstQuartile a";
  const struct {
    const char* behaviour;
    std::vector<double> ticks;
    Lines expected;
  } rows[] = {
      {"once while the playhead stays", {1, 3.1, 3.6, 3.999, 4, 4.9}, {begin, start, quartile}},
      {"in the order of the document",
       {1, 5, 7},
       {begin, start, "adDidComplete a", "adDidStart b", "adDidComplete b", "adBreakDidEnd x"}},
      {"not those jumped over", {0.5, 3.2, 6, 7.5}, {}},
      {"again after a seek back, but for starts",
       {1, 3.1, 2.9, 3.2, 1.5, 3},
       {begin, start, quartile, quartile, quartile}},
      {"not for an ad that is over",
       {1, 5, 3, 1},
       {begin, start, "adDidComplete a", "adDidStart b"}},
      {"below zero by their floor", {-0.5, -1.5}, {begin, start}},
      {"not where the time is no number",
       {nan, infinity, -infinity, 1e300, -1e300, 1, 3.1, nan, 3.2},
       {begin, start, quartile}},
      {"an infinite time overruns",
       {1, -infinity, nan, infinity, 3.1},
       {begin, start, "adBreakDidEnd x"}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.behaviour);
    Session session;
    session.openVOD(R"({"times": {"1": [{"type": "START", "ad": "a"}],
        "3": [{"ad": "a"}, {"type": "midpoint"}, 7, {"type": "", "ad": "a"},
              {"type": "firstQuartile", "ad": "a"}, {"type": "skip", "ad": "a"}],
        "4": {"type": "start", "ad": "a"},
        "5": [{"type": "complete", "ad": "a"}, {"type": "start", "ad": "b"}],
        "7": [{"type": "complete", "ad": "b"}], "-2": [{"type": "start", "ad": "a"}]},
        "ads": {"a": {"break": "x", "position": 1, "duration": 4, "vast": "<VAST><Ad/></VAST>"},
                "b": {"break": "x", "position": 2, "duration": 4, "vast": "<VAST><Ad/></VAST>"}},
        "breaks": {"x": {"ads": 2, "duration": 8}}})");
    session.happened();
    session.progress(row.ticks);
    EXPECT_EQ(session.happened(), row.expected);
  }
}

TEST(VODTimes, AreConverted) {
  const std::string two =
      R"([{"start": 120, "end": 150}, {"start": 30, "end": 60}, {"start": 5}, {"end": 6}])";
  const std::string inverted = R"([{"start": 10, "end": 20}, {"start": 50, "end": 40}])";
  constexpr double none = -1;
  const struct {
    std::string cuepoints;
    double streamTime, contentOfStreamTime, previousStart, contentTime, streamOfContentTime;
  } rows[] = {{two, 29.9, 29.9, none, 29.9, 29.9},
              {two, 30, 30, none, 30, 60},
              {two, 30.5, 30, 30, 89.9, 119.9},
              {two, 60, 30, 30, 90, 150},
              {two, 130, 90, 120, 90.1, 150.1},
              {"[]", 45.5, 45.5, none, 45.5, 45.5},
              {R"([{"start": 0, "end": 10}])", 0.5, 0, 0, 0, 10},
              {inverted, 60, 0, 50, 60, 0},
              {inverted, 5, 0, none, 5, 5}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.cuepoints + " at " + std::to_string(row.streamTime));
    Session session;
    session.openVOD(R"({"cuepoints": )" + row.cuepoints + "}");
    const auto& manager = *session.manager;
    EXPECT_DOUBLE_EQ(manager.contentTimeForStreamTime(row.streamTime), row.contentOfStreamTime);
    EXPECT_DOUBLE_EQ(manager.streamTimeForContentTime(row.contentTime), row.streamOfContentTime);
    const auto previous = manager.previousCuepointForStreamTime(row.streamTime);
    EXPECT_EQ(previous ? previous->startTime() : none, row.previousStart);
  }
}

TEST_F(VODStreamMonitor, MarksCuepointsPlayedOnlyInTheWholeSecondAtWhichTheyStart) {
  openVOD(R"({"cuepoints": [{"start": 10, "end": 20}, {"start": 30, "end": 60},
                            {"start": 30, "end": 40}, {"start": 40.5, "end": 50}],
      "times": {"30": [{"type": "start", "ad": "a"}], "40": [{"type": "start", "ad": "b"}],
                "10": [{"type": "start", "ad": "a"}]},
      "ads": {"a": {"position": 1, "vast": "<VAST><Ad/></VAST>"},
              "b": {"vast": "<VAST><Ad/></VAST>"}}})");
  happened();
  progress({30.4, 40.5, 30, 10, 10.5});
  EXPECT_EQ(happened(),
            (Lines{"adBreakDidStart  (-1 ads, 0 s)", "adDidStart a",
                   "didUpdateCuepoints [10-20] [30-60 played] [30-40] [40.5-50]",
                   "didUpdateCuepoints [10-20] [30-60 played] [30-40 played] [40.5-50]",
                   "adBreakDidEnd", "adDidStart b",
                   "didUpdateCuepoints [10-20 played] [30-60 played] [30-40 played] [40.5-50]"}));
}

TEST_F(VODStreamMonitor, LosesTheSecondsReachedBeforeTheDocument) {
  server().answer(vodDocument, {200, StreamInfoBuilder::vod().addAd("a", 4).build(), 2});
  open(goodAnswer(false));
  progress({0});
  loop().advance(2);
  progress({0.9, 1});
  EXPECT_EQ(host->lines(), (Lines{"didInitializeStream stream-1", "didUpdateCuepoints [0-4]"}));
  progress({2, 0.5});
  EXPECT_EQ(host->events().back().line, "didUpdateCuepoints [0-4 played]");
}

TEST_F(VODStreamMonitor, PlaysWithoutAUsableDocument) {
  const CannedAnswer failures[] = {{400, "{}"}, {200, "no JSON"}, {200, "[]"}, {200, "{}", 5.1}};
  for (const CannedAnswer& failure : failures) {
    server().answer(vodDocument, failure);
    open(goodAnswer(false));
    loop().advance(30);
    progress({1, 2, 3});
    EXPECT_EQ(happened(), (Lines{"POST " + vodURL, "didInitializeStream stream-1",
                                 "GET " + vodDocument, "load https://media.example/main.m3u8"}))
        << failure.body;
  }
}

}  // namespace
}  // namespace xel::test
