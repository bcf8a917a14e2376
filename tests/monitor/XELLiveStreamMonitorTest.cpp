#include "support/Session.h"

namespace xel::test {
namespace {

const std::string documentURL = "https://ads.example/live.json";
const std::string loadMain = "load https://media.example/main.m3u8";
const std::string loadPreroll = "load https://media.example/preroll.m3u8";

std::string documentWith(const char* adKey) {
  return StreamInfoBuilder::live().addAd(adKey, 10).build();
}

struct PeriodCase {
  const char* behaviour;
  const char* member;
  double period;
};

class PollingPeriod : public SessionTest, public testing::WithParamInterface<PeriodCase> {};

TEST_P(PollingPeriod, SeparatesTheRequestsFromTheFirstOneOn) {
  server().answerOtherDocuments({200, "{}"});
  server().answer(liveURL, {200, R"({"stream_id": "s", "stream_manifest": "https://m.example/",
                                     "stream_type": "live", "id3_events_url": ")" +
                                     documentURL + "\"" + GetParam().member + "}"});
  manager->requestStream(liveRequest());
  const double period = GetParam().period;
  loop().advance(2.5 * period);
  std::vector<double> times;
  for (const auto& sent : server().requests()) times.push_back(sent.time);
  ASSERT_EQ(times.size(), 4u);
  for (int poll = 0; poll < 3; ++poll) {
    EXPECT_NEAR(times[poll + 1], poll * period, 1e-6 * period) << poll;
  }
}

INSTANTIATE_TEST_SUITE_P(
    , PollingPeriod,
    testing::Values(PeriodCase{"Absent", "", 10},
                    PeriodCase{"Zero", R"(, "polling_frequency": 0)", 10},
                    PeriodCase{"Negative", R"(, "polling_frequency": -5)", 10},
                    PeriodCase{"Fraction", R"(, "polling_frequency": 2.5)", 2.5},
                    PeriodCase{"Long", R"(, "polling_frequency": 86400)", 86400},
                    PeriodCase{"Text", R"(, "polling_frequency": "2.5")", 10},
                    PeriodCase{"Boolean", R"(, "polling_frequency": true)", 10},
                    PeriodCase{"Null", R"(, "polling_frequency": null)", 10},
                    PeriodCase{"TooSmallForAFloat", R"(, "polling_frequency": 1e-60)", 10},
                    PeriodCase{"TooLargeForAFloat", R"(, "polling_frequency": 1e300)", 10},
                    PeriodCase{"Infinite", R"(, "polling_frequency": 1e999)", 10}),
    [](const auto& info) { return info.param.behaviour; });

struct FailedPollCase {
  const char* behaviour;
  std::optional<TransferError> error;
  CannedAnswer answer;
};

class FailedPoll : public SessionTest, public testing::WithParamInterface<FailedPollCase> {
 protected:
  void failNext() {
    const auto& [behaviour, error, answer] = GetParam();
    if (error) server().fail(documentURL, *error);
    if (!error) server().answer(documentURL, answer);
  }
};

TEST_P(FailedPoll, StartsTheStreamAllTheSameAndKeepsTheDocumentBefore) {
  failNext();
  server().answer(documentURL, {200, documentWith("a")});
  failNext();
  open(StreamInitAnswerBuilder::live());
  loop().advance(9.9);
  metadata({"a,start"});
  EXPECT_EQ(happened(), (Lines{"POST " + liveURL, "didInitializeStream stream-1",
                               "GET " + documentURL, loadMain}));
  loop().advance(0.1);
  metadata({"a,start"});
  loop().advance(16);
  metadata({"a,midpoint"});
  EXPECT_EQ(happened(), (Lines{"GET " + documentURL, "adBreakDidStart break-1 (1 ads, 10 s)",
                               "ping start a/impression", "ping start a/start", "adDidStart a",
                               "ping creativeview a/creativeview", "GET " + documentURL,
                               "ping midpoint a/midpoint", "adDidCrossMidpoint a"}));
}

INSTANTIATE_TEST_SUITE_P(
    , FailedPoll,
    testing::Values(FailedPollCase{"NoConnection", TransferError::couldNotConnect, {}},
                    FailedPollCase{"SlowerThanFiveSeconds", {}, {200, documentWith("late"), 5.1}},
                    FailedPollCase{"Status400", {}, {400, documentWith("refused")}},
                    FailedPollCase{"NotJSON", {}, {200, "<html>"}},
                    FailedPollCase{"Empty", {}, {200, ""}},
                    FailedPollCase{"Array", {}, {200, "[]"}},
                    FailedPollCase{"BareScalar", {}, {200, "0"}}),
    [](const auto& info) { return info.param.behaviour; });

class LiveStreamMonitor : public SessionTest {
 protected:
  /// What a hand-over test starts with: a break of two ads before the stream.
  void openPreroll() {
    auto answer = StreamInitAnswerBuilder::live();
    answer.prerollManifest = "https://media.example/preroll.m3u8";
    answer.subtitles = {{{.ttml = "t"}}};
    auto info = StreamInfoBuilder::live();
    open(answer, info.addBreak("pre", 0).addAd("p", 10).addAd("q", 10).build());
    EXPECT_EQ(happened().back(), loadPreroll);
  }
  Lines loads() {
    Lines loads = happened();
    std::erase_if(loads, [](const std::string& line) { return !line.starts_with("load "); });
    return loads;
  }
  const Lines loadMainWithSubtitles = {loadMain + R"( {"ttml":"t"})"};
};

TEST_F(LiveStreamMonitor, PollsAsItselfPastEveryCacheForAtMostFiveSeconds) {
  openLive("{}");
  const auto& request = server().requests().at(1).request;
  EXPECT_EQ(request.header("User-Agent"), "XELtvOS/t.1.2.3 ExampleOS/6.7 com.example.player/4.5");
  EXPECT_EQ(request.cachePolicy, HTTPRequest::CachePolicy::reloadIgnoringLocalCache);
  EXPECT_EQ(request.timeout, std::chrono::seconds(5));
  EXPECT_FALSE(request.trackingEvent);
}

TEST_F(LiveStreamMonitor, TakesTheDocumentThatArrivesLast) {
  auto answer = StreamInitAnswerBuilder::live();
  answer.pollingFrequency = 1;
  server().answer(documentURL, {200, documentWith("a"), 2.5});
  server().answer(documentURL, {200, documentWith("b"), 0.2});
  server().hang(documentURL);
  open(answer);
  loop().advance(1.1);
  EXPECT_TRUE(display->loads().empty());
  loop().advance(1.3);
  metadata({"a,start", "b,start"});
  EXPECT_EQ(host->events().back().line, "adDidStart b");
  loop().advance(0.2);
  metadata({"b,midpoint", "a,start"});
  EXPECT_EQ(host->events().back().line, "adDidStart a");
  EXPECT_EQ(loads(), Lines{loadMain});
}

TEST_F(LiveStreamMonitor, EndsTheBreakWhenTheDocumentHasLostTheCurrentAd) {
  auto info = StreamInfoBuilder::live();
  info.addBreak("mid", 0).addAd("a", 4).addAd("b", 4);
  openLive(info.build());
  server().answer(documentURL,
                  {200, R"({"tags": {"a,complete": {"type": "COMPLETE", "ad": "a"}}})"});
  metadata({"a,start"});
  loop().advance(10);
  happened();
  metadata({"a,midpoint"});
  progress({1});
  metadata({"a,complete", "a,complete"});
  progress({2});
  EXPECT_EQ(happened(),
            (Lines{"ping complete a/complete", "adDidComplete a", "adBreakDidEnd mid"}));
}

TEST_F(LiveStreamMonitor, HearsOnlyTextsThatTheDocumentMarksExactly) {
  openLive(R"({"tags": {"no ad": {"type": "start"}, "no type": {"ad": "a"}, "odd": ["start", "a"],
                        "empty": {"type": "", "ad": ""}, "wrong": {"type": 1, "ad": "a"},
                        "unknown": {"type": "pause", "ad": "a"},
                        "internal": {"type": "creativeview", "ad": "a"},
                        "exact": {"type": "Start", "ad": "a"}},
               "ads": {"a": {"vast": "<VAST><Ad></Ad></VAST>"}}})");
  happened();
  display->reportMetadata({});
  display->reportMetadata({{"TIT2", "exact"}, {"txxx", "exact"}});
  metadata({"no ad", "no type", "odd", "empty", "wrong", "unknown", "internal", "Exact", "exact ",
            " exact", ""});
  EXPECT_EQ(happened(), Lines());
  display->reportMetadata({{"TIT2", "other"}, {"TXXX", "exact"}});
  EXPECT_EQ(happened(), Lines{"adDidStart a"});
}

TEST_F(LiveStreamMonitor, PlaysWithoutAdsWhenThereIsNothingToPoll) {
  auto answer = StreamInitAnswerBuilder::live();
  answer.id3EventsURL.reset();
  open(answer);
  loop().advance(60);
  metadata({"a,start", "a,complete"});
  EXPECT_EQ(happened(), (Lines{"POST " + liveURL, "didInitializeStream stream-1", loadMain}));
  expectedLog = {"Internal Error: No tracking pings for this stream."};
}

TEST_F(LiveStreamMonitor, HandsOverWhenTheLastAdOfThePrerollCompletes) {
  openPreroll();
  loop().advance(30);
  metadata({"p,start", "p,complete", "q,start"});
  EXPECT_EQ(loads(), Lines());
  metadata({"q,complete"});
  EXPECT_EQ(loads(), loadMainWithSubtitles);
  metadata({"q,complete", "p,complete"});
  EXPECT_EQ(loads(), Lines());
}

TEST_F(LiveStreamMonitor, HandsOverAtACompleteWithoutACurrentAd) {
  openPreroll();
  metadata({"p,midpoint", "p,complete"});
  EXPECT_EQ(loads(), loadMainWithSubtitles);
}

TEST_F(LiveStreamMonitor, HandsOverAtACompleteAfterAnOverrunButNotAtTheOverrun) {
  openPreroll();
  metadata({"p,start", "p,complete", "q,start"});
  progress({0, 12});
  EXPECT_EQ(happened().back(), "adBreakDidEnd pre");
  EXPECT_EQ(loads(), Lines());
  metadata({"q,complete"});
  EXPECT_EQ(loads(), loadMainWithSubtitles);
}

TEST_F(LiveStreamMonitor, StopsPollingWithItsManager) {
  openLive("{}");
  std::weak_ptr<XELVideoDisplayDelegate> monitor = display->delegate();
  EXPECT_EQ(loop().timerCount(), 1u);
  EXPECT_FALSE(monitor.expired());
  manager.reset();
  EXPECT_EQ(loop().timerCount(), 0u);
  EXPECT_TRUE(monitor.expired());
  happened();
  loop().advance(100);
  EXPECT_EQ(happened(), Lines());
}

}  // namespace
}  // namespace xel::test
