#include <cmath>
#include <limits>
#include <optional>

#include "support/Session.h"

namespace xel::test {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

struct TicksCase {
  const char* behaviour;
  std::vector<double> ticks;
  Lines expected;
};

class Ticks : public SessionTest, public testing::WithParamInterface<TicksCase> {};

TEST_P(Ticks, HandleTheSecondsThatTheyReach) {
  openVOD(R"({"times": {"1": [{"type": "START", "ad": "a"}],
                        "3": [{"ad": "a"}, {"type": "midpoint"}, 7, {"type": "", "ad": "a"},
                              {"type": "firstQuartile", "ad": "a"}, {"type": "skip", "ad": "a"}],
                        "4": {"type": "start", "ad": "a"},
                        "5": [{"type": "complete", "ad": "a"}, {"type": "start", "ad": "b"}],
                        "7": [{"type": "complete", "ad": "b"}],
                        "-2": [{"type": "start", "ad": "a"}]},
              "ads": {"a": {"break": "x", "position": 1, "duration": 4, "vast": "<VAST><Ad/></VAST>"},
                      "b": {"break": "x", "position": 2, "duration": 4, "vast": "<VAST><Ad/></VAST>"}},
              "breaks": {"x": {"ads": 2, "duration": 8}}})");
  happened();
  progress(GetParam().ticks);
  EXPECT_EQ(happened(), GetParam().expected);
}

const Lines startA = {"adBreakDidStart x (2 ads, 8 s)", "adDidStart a"};
Lines afterStartA(Lines more) {
  more.insert(more.begin(), startA.begin(), startA.end());
  return more;
}
const char* const quartile = "adDidCrossFirstQuartile a";

INSTANTIATE_TEST_SUITE_P(
    , Ticks,
    testing::Values(TicksCase{"OnceWhileThePlayheadStaysInThem",
                              {1, 3.1, 3.6, 3.999, 4, 4.9},
                              afterStartA({quartile})},
                    TicksCase{"InTheOrderOfTheDocument",
                              {1, 5, 7},
                              afterStartA({"adDidComplete a", "adDidStart b", "adDidComplete b",
                                           "adBreakDidEnd x"})},
                    TicksCase{"ButNotThoseJumpedOver", {0.5, 3.2, 6, 7.5}, {}},
                    TicksCase{"AgainAfterASeekBackButNoSecondStart",
                              {1, 3.1, 2.9, 3.2, 1.5, 3},
                              afterStartA({quartile, quartile, quartile})},
                    TicksCase{"NotForAnAdThatIsOver",
                              {1, 5, 3, 1},
                              afterStartA({"adDidComplete a", "adDidStart b"})},
                    TicksCase{"BelowZeroByTheirFloor", {-0.5, -1.5}, startA},
                    TicksCase{"UnlessTheTimeIsNoNumber",
                              {nan, infinity, -infinity, 1e300, -1e300, 1, 3.1, nan, 3.2},
                              afterStartA({quartile})},
                    TicksCase{"WhereAnInfiniteTimeOverrunsTheBreak",
                              {1, -infinity, nan, infinity, 3.1},
                              afterStartA({"adBreakDidEnd x"})}),
    [](const auto& info) { return info.param.behaviour; });

struct TimesCase {
  const char* behaviour;
  const char* cuepoints;
  double streamTime;
  double contentOfStreamTime;
  double contentTime;
  double streamOfContentTime;
  std::optional<double> previousStart;
};

class VODTimes : public SessionTest, public testing::WithParamInterface<TimesCase> {};

TEST_P(VODTimes, AreConverted) {
  const auto& times = GetParam();
  openVOD(R"({"cuepoints": )" + std::string(times.cuepoints) + "}");
  EXPECT_DOUBLE_EQ(manager->contentTimeForStreamTime(times.streamTime), times.contentOfStreamTime);
  EXPECT_DOUBLE_EQ(manager->streamTimeForContentTime(times.contentTime), times.streamOfContentTime);
  const auto previous = manager->previousCuepointForStreamTime(times.streamTime);
  EXPECT_EQ(previous ? std::optional(previous->startTime()) : std::nullopt, times.previousStart);
}

constexpr const char* twoBreaks =
    R"([{"start": 120, "end": 150}, {"start": 30, "end": 60}, {"start": 5}, {"end": 6}])";

INSTANTIATE_TEST_SUITE_P(
    , VODTimes,
    testing::Values(
        TimesCase{"BeforeEveryBreak", twoBreaks, 29.9, 29.9, 29.9, 29.9, {}},
        TimesCase{"AtTheStartOfABreak", twoBreaks, 30, 30, 30, 60, {}},
        TimesCase{"InABreak", twoBreaks, 45, 30, 89.9, 119.9, 30},
        TimesCase{"AtTheEndOfABreak", twoBreaks, 60, 30, 90, 150, 30},
        TimesCase{"BetweenBreaks", twoBreaks, 70, 40, 40, 70, 30},
        TimesCase{"InTheLastBreak", twoBreaks, 130, 90, 90.1, 150.1, 120},
        TimesCase{"AfterEveryBreak", twoBreaks, 160, 100, 100, 160, 120},
        TimesCase{"WithoutBreaks", "[]", 45.5, 45.5, 45.5, 45.5, {}},
        TimesCase{"WithABreakAtTheBeginning", R"([{"start": 0, "end": 10}])", 0.5, 0, 0, 10, 0},
        TimesCase{"WithABreakThatEndsBeforeItStarts",
                  R"([{"start": 10, "end": 20}, {"start": 50, "end": 40}])", 60, 0, 60, 0, 50},
        TimesCase{"BeforeABreakThatEndsBeforeItStarts",
                  R"([{"start": 10, "end": 20}, {"start": 50, "end": 40}])",
                  5,
                  0,
                  5,
                  5,
                  {}}),
    [](const auto& info) { return info.param.behaviour; });

using VODStreamMonitor = SessionTest;

TEST_F(VODStreamMonitor, MarksCuepointsPlayedOnlyInTheWholeSecondAtWhichTheyStart) {
  openVOD(R"({"cuepoints": [{"start": 10, "end": 20}, {"start": 30, "end": 60},
                            {"start": 30, "end": 40}, {"start": 40.5, "end": 50}],
              "times": {"30": [{"type": "start", "ad": "a"}], "40": [{"type": "start", "ad": "b"}],
                        "10": [{"type": "start", "ad": "a"}]},
              "ads": {"a": {"position": 1, "vast": "<VAST><Ad/></VAST>", "duration": 5},
                      "b": {"position": 1, "vast": "<VAST><Ad/></VAST>", "duration": 5}}})");
  progress({30.4, 40.5, 30, 10, 10.5});
  EXPECT_EQ(
      happened(),
      (Lines{"POST " + vodURL, "didInitializeStream stream-1", "GET https://ads.example/vod.json",
             "didUpdateCuepoints [10-20] [30-60] [30-40] [40.5-50]",
             "load https://media.example/main.m3u8", "adBreakDidStart  (-1 ads, 0 s)",
             "adDidStart a", "didUpdateCuepoints [10-20] [30-60 played] [30-40] [40.5-50]",
             "didUpdateCuepoints [10-20] [30-60 played] [30-40 played] [40.5-50]", "adBreakDidEnd",
             "adBreakDidStart  (-1 ads, 0 s)", "adDidStart b",
             "didUpdateCuepoints [10-20 played] [30-60 played] [30-40 played] [40.5-50]"}));
}

TEST_F(VODStreamMonitor, LosesTheSecondsReachedBeforeTheDocument) {
  auto info = StreamInfoBuilder::vod();
  server().answer("https://ads.example/vod.json", {200, info.addAd("a", 4).build(), 2});
  open(StreamInitAnswerBuilder::vod());
  progress({0});
  loop().advance(2);
  progress({0.9, 1});
  EXPECT_EQ(host->lines(), (Lines{"didInitializeStream stream-1", "didUpdateCuepoints [0-4]"}));
  progress({2, 0.5});
  EXPECT_EQ(host->events().back().line, "didUpdateCuepoints [0-4 played]");
}

TEST_F(VODStreamMonitor, AnnouncesTheFirstDocumentEvenWithoutCuepoints) {
  openVOD("{}");
  EXPECT_EQ(host->lines().back(), "didUpdateCuepoints (none)");
}

TEST_F(VODStreamMonitor, PlaysWithoutADocumentWhenThereIsNone) {
  auto answer = StreamInitAnswerBuilder::vod();
  const CannedAnswer failures[] = {{400, "{}"}, {200, "no JSON"}, {200, "[]"}, {200, "{}", 5.1}};
  for (const CannedAnswer& failure : failures) {
    server().answer("https://ads.example/vod.json", failure);
    open(answer);
    loop().advance(30);
    progress({1, 2, 3});
    EXPECT_EQ(happened(),
              (Lines{"POST " + vodURL, "didInitializeStream stream-1",
                     "GET https://ads.example/vod.json", "load https://media.example/main.m3u8"}))
        << failure.status << failure.body;
  }
  answer.timeEventsURL.reset();
  open(answer);
  EXPECT_EQ(happened(), (Lines{"POST " + vodURL, "didInitializeStream stream-1",
                               "load https://media.example/main.m3u8"}));
  expectedLog = {"Internal Error: No tracking pings for this stream."};
}

}  // namespace
}  // namespace xel::test
