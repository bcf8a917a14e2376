#include "support/Session.h"

namespace xel::test {
namespace {

using LiveStreamMonitor = SessionTest;

std::string documentWith(const char* adKey) {
  return StreamInfoBuilder::live().addAd(adKey, 10).build();
}

TEST(PollingPeriod, IsThePositiveNumberGivenOrTenSeconds) {
  const struct {
    const char* given;
    double period;
  } rows[] = {{"0", 10},       {"-5", 10},    {"2.5", 2.5}, {"86400", 86400},
              {"\"2.5\"", 10}, {"true", 10},  {"null", 10}, {"1e-60", 10},
              {"1e300", 10},   {"1e999", 10}, {nullptr, 10}};
  for (const auto& [given, period] : rows) {
    SCOPED_TRACE(given ? given : "absent");
    Session session;
    session.server().answerOtherDocuments({200, "{}"});
    const std::string member = given ? R"("polling_frequency": )" + std::string(given) + "," : "";
    session.server().answer(session.liveURL,
                            {200, "{" + member + R"("stream_id": "s", "stream_type": "live",
         "stream_manifest": "https://m.example/", "id3_events_url": "https://a.example/"})"});
    session.manager->requestStream(Session::request(true));
    session.loop().advance(2.5 * period);
    const auto& sent = session.server().requests();
    ASSERT_EQ(sent.size(), 4u);
    for (int poll = 0; poll < 3; ++poll) {
      EXPECT_NEAR(sent[poll + 1].time, poll * period, 1e-6);
      EXPECT_EQ(sent[poll + 1].request.cachePolicy,
                HTTPRequest::CachePolicy::reloadIgnoringLocalCache);
    }
  }
}

TEST(FailedPoll, StartsTheStreamAllTheSameAndKeepsTheDocumentBefore) {
  const struct {
    const char* behaviour;
    std::optional<CannedAnswer> answer;
  } rows[] = {{"no connection", {}},
              {"slower than five seconds", {{200, documentWith("late"), 5.1}}},
              {"refused", {{400, documentWith("refused")}}},
              {"no JSON", {{200, "<html>"}}},
              {"bare scalar", {{200, "0"}}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.behaviour);
    Session session;
    const auto failNext = [&] {
      if (row.answer) session.server().answer(session.liveDocument, *row.answer);
      if (!row.answer) session.server().fail(session.liveDocument, TransferError::couldNotConnect);
    };
    failNext();
    session.server().answer(session.liveDocument, {200, documentWith("a")});
    failNext();
    session.open(Session::goodAnswer(true));
    session.loop().advance(9.9);
    session.metadata({"a,start"});
    const std::string poll = "GET " + session.liveDocument;
    EXPECT_EQ(session.happened(), (Lines{"POST " + session.liveURL, "didInitializeStream stream-1",
                                         poll, "load https://media.example/main.m3u8"}));
    session.loop().advance(0.1);
    session.metadata({"a,start"});
    session.loop().advance(16);
    session.metadata({"a,midpoint"});
    EXPECT_EQ(session.happened(),
              (Lines{poll, "adBreakDidStart break-1 (1 ads, 10 s)", "ping start a/impression",
                     "ping start a/start", "adDidStart a", "ping creativeview a/creativeview", poll,
                     "ping midpoint a/midpoint", "adDidCrossMidpoint a"}));
  }
}

TEST_F(LiveStreamMonitor, StartsAfterTheFirstAnswerAndTakesTheDocumentThatArrivesLast) {
  auto answer = goodAnswer(true);
  answer.pollingFrequency = 1;
  server().answer(liveDocument, {200, documentWith("a"), 2.5});
  server().answer(liveDocument, {200, documentWith("b"), 0.2});
  server().hang(liveDocument);
  open(answer);
  loop().advance(1.1);
  EXPECT_TRUE(display->loads().empty());
  loop().advance(1.3);
  metadata({"a,start", "b,start"});
  EXPECT_EQ(host->events().back().line, "adDidStart b");
  loop().advance(0.2);
  metadata({"b,midpoint", "a,start"});
  EXPECT_EQ(host->events().back().line, "adDidStart a");
  EXPECT_EQ(display->loads().size(), 1u);
}

TEST_F(LiveStreamMonitor, EndsTheBreakWhenTheDocumentHasLostTheCurrentAd) {
  openLive(StreamInfoBuilder::live().addBreak("mid", 0).addAd("a", 4).addAd("b", 4).build());
  server().answer(liveDocument,
                  {200, R"({"tags": {"a,complete": {"type": "COMPLETE", "ad": "a"}}})"});
  metadata({"a,start"});
  loop().advance(10);
  happened();
  metadata({"a,midpoint", "a,complete", "a,complete"});
  EXPECT_EQ(happened(),
            (Lines{"ping complete a/complete", "adDidComplete a", "adBreakDidEnd mid"}));
}

TEST_F(LiveStreamMonitor, HearsOnlyTextsThatTheDocumentMarksExactly) {
  openLive(R"({"tags": {"no ad": {"type": "start"}, "no type": {"ad": "a"}, "odd": ["start", "a"],
      "empty": {"type": "", "ad": ""}, "wrong": {"type": 1, "ad": "a"},
      "unknown": {"type": "pause", "ad": "a"}, "internal": {"type": "creativeview", "ad": "a"},
      "exact": {"type": "Start", "ad": "a"}}, "ads": {"a": {"vast": "<VAST><Ad/></VAST>"}}})");
  happened();
  display->reportMetadata({});
  display->reportMetadata({{"TIT2", "exact"}, {"txxx", "exact"}});
  metadata({"no ad", "no type", "odd", "empty", "wrong", "unknown", "internal", "Exact", "exact "});
  EXPECT_EQ(happened(), Lines());
  display->reportMetadata({{"TIT2", "other"}, {"TXXX", "exact"}});
  EXPECT_EQ(happened(), Lines{"adDidStart a"});
}

TEST(Preroll, IsFollowedByTheStreamOnceAndOnlyAtACompleteThatLeavesNoAd) {
  const struct {
    std::vector<const char*> before;
    const char* handOver;
  } rows[] = {{{"p,midpoint"}, "p,complete"}, {{"p,start", "p,complete", "q,start"}, "q,complete"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.handOver);
    Session session;
    auto answer = Session::goodAnswer(true);
    answer.prerollManifest = "https://media.example/preroll.m3u8";
    session.open(answer, StreamInfoBuilder::live().addAd("p", 10).addAd("q", 10).build());
    session.loop().advance(30);
    session.metadata(row.before);
    session.progress({0, 11});
    const auto& loads = session.display->loads();
    ASSERT_EQ(loads.size(), 1u);
    EXPECT_EQ(loads[0].url, answer.prerollManifest);
    session.metadata({row.handOver});
    ASSERT_EQ(loads.size(), 2u);
    EXPECT_EQ(loads[1].url, answer.manifest);
    session.metadata({"p,complete", "q,complete"});
    EXPECT_EQ(loads.size(), 2u);
  }
}

}  // namespace
}  // namespace xel::test
