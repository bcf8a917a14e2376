#include <set>

#include "support/Session.h"

namespace xel::test {
namespace {

using StreamManager = SessionTest;

/// Underlying errors by domain and code alone.
std::string summary(const Error& error) {
  std::string text = error.domain + " " + std::to_string(error.code) + " " + error.description;
  if (const auto& cause = error.underlying) {
    text += " <- " + cause->domain + " " + std::to_string(cause->code);
  }
  return text;
}

TEST(StreamInitAnswer, OpensTheStreamOrFailsAndLeavesTheManagerUsable) {
  const std::string good = StreamInitAnswerBuilder::vod().build();
  const auto withType = [](const std::string& members) {
    return R"({"stream_manifest": "https://media.example/main.m3u8", )" + members + "}";
  };
  const auto notJSON = [](int code) {
    const std::string number = std::to_string(code);
    return Lines{"XELError " + number +
                 " Stream request failed with internal error <- XELJSONError " + number};
  };
  const Lines opened = {"didInitializeStream stream-1"};
  const Lines invalid = {"XELError 0 Stream initialized with invalid response"};
  const Lines badType = {"didInitializeStream s",
                         "XELError 0 Stream initialized with invalid stream type"};
  const struct {
    const char* behaviour;
    CannedAnswer answer;
    Lines expected;
  } rows[] = {
      {"after less than five seconds", {204, good, 4.9}, opened},
      {"status 399", {399, good}, opened},
      {"slower than five seconds",
       {200, good, 5.1},
       {"XELError 3 Unable to request stream <- XELTransferError 3"}},
      {"status 400", {400, "denied"}, {"XELHttpError 400 Stream initialization failed: denied"}},
      {"good body", {500, good}, {"XELHttpError 500 Stream initialization failed: " + good}},
      {"not UTF-8", {404, "\xFF"}, {"XELHttpError 404 Stream initialization failed: (null)"}},
      {"text", {200, "denied"}, notJSON(1)},
      {"cut", {200, R"({"a": 1)"}, notJSON(2)},
      {"bare number", {200, "42"}, notJSON(4)},
      {"empty object", {200, "{}"}, invalid},
      {"array", {200, R"([{"stream_id": "s"}])"}, invalid},
      {"no id", {200, withType(R"("stream_type": "live")")}, invalid},
      {"no manifest", {200, R"({"stream_id": "s", "stream_type": "live"})"}, invalid},
      {"no type", {200, withType(R"("stream_id": "s")")}, badType},
      {"other type", {200, withType(R"("stream_id": "s", "stream_type": "Live")")}, badType},
      {"type no text", {200, withType(R"("stream_id": "s", "stream_type": 1)")}, badType},
      {"id no text", {200, withType(R"("stream_id": 7)")}, {"didInitializeStream", badType[1]}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.behaviour);
    Session session;
    session.server().answer(session.vodURL, row.answer);
    session.manager->requestStream(Session::request(false));
    session.loop().advance(6);
    Lines heard;
    for (const auto& event : session.host->events()) {
      heard.push_back(event.error ? summary(*event.error) : event.line);
    }
    EXPECT_EQ(heard, row.expected);
    EXPECT_EQ(session.manager->contentTimeForStreamTime(7), row.expected == opened ? 7 : 0);
    EXPECT_EQ(session.manager->previousCuepointForStreamTime(7), nullptr);
    session.openVOD("{}");
    EXPECT_EQ(session.manager->contentTimeForStreamTime(7), 7);
  }
}

TEST_F(StreamManager, RefusesARequestOfAnotherKindLaterAndWithoutSendingIt) {
  struct OtherRequest : XELStreamRequest {};
  for (const auto& request : {std::shared_ptr<XELStreamRequest>(new OtherRequest), {}}) {
    manager->requestStream(request);
    EXPECT_EQ(happened(), Lines());
    loop().runUntilIdle();
    EXPECT_EQ(happened(), Lines{"didReceiveError XELError 0: Unable to request stream"});
  }
  expectedLog = {2, "Error: Invalid stream request"};
}

TEST_F(StreamManager, TakesAMemberOfTheWrongTypeForAMissingOneAndPlaysWithoutAds) {
  for (const bool live : {true, false}) {
    const std::string type = live ? "live" : "on_demand";
    server().answer(initURL(live), {200, R"({"stream_id": null, "stream_manifest": "https://m/",
        "subtitles": 3, "id3_events_url": {}, "time_events_url": false, "preroll_manifest": 1,
        "stream_type": ")" + type + "\"}"});
    manager->requestStream(request(live));
    loop().advance(60);
    metadata({"a,start"});
    EXPECT_EQ(happened(),
              (Lines{"POST " + initURL(live), "didInitializeStream", "load https://m/"}));
  }
  expectedLog = {2, "Internal Error: No tracking pings for this stream."};
}

TEST_F(StreamManager, SendsOneCorrelatorPerProcess) {
  const auto other = XELStreamManager::initWithVideoDisplay(display);
  manager->requestStream(request(true));
  other->requestStream(request(false));
  ASSERT_EQ(server().requests().size(), 2u);
  std::set<std::string> correlators;
  for (const auto& sent : server().requests()) {
    correlators.insert(sent.request.body.substr(0, sent.request.body.find('&')));
  }
  EXPECT_EQ(correlators.size(), 1u);
}

TEST_F(StreamManager, GivesEachAnswerAMonitorAndTheRequestMadeLast) {
  const auto first = request(true);
  const auto second = request(false);
  first->setManifestURLSuffix("from=first");
  second->setManifestURLSuffix("from=second");
  auto live = goodAnswer(true);
  live.streamID = "live";
  server().answer(liveURL, {200, live.build(), 2});
  server().answer(vodURL, {200, goodAnswer(false).build(), 1});
  server().answer(vodDocument, {200, StreamInfoBuilder::vod().addAd("a", 5).build()});
  manager->requestStream(first);
  manager->requestStream(second);
  loop().advance(1);
  EXPECT_EQ(manager->contentTimeForStreamTime(6), 1);
  loop().advance(1);
  EXPECT_EQ(manager->contentTimeForStreamTime(6), 6);
  const std::string load = "load https://media.example/main.m3u8?from=second";
  EXPECT_EQ(happened(), (Lines{"POST " + liveURL, "POST " + vodURL, "didInitializeStream stream-1",
                               "GET " + vodDocument, "didUpdateCuepoints [0-5]", load,
                               "didInitializeStream live", "GET " + liveDocument, load}));
}

TEST_F(StreamManager, FollowsTheStreamRequestedWhileAnotherRuns) {
  openLive(StreamInfoBuilder::live().addAd("a", 10).build());
  metadata({"a,start"});
  EXPECT_EQ(manager->contentTimeForStreamTime(4), 4);
  EXPECT_EQ(manager->streamTimeForContentTime(4), 4);
  openVOD(StreamInfoBuilder::vod().addAd("b", 10).build());
  happened();
  metadata({"a,midpoint"});
  EXPECT_EQ(manager->contentTimeForStreamTime(4), 0);
  progress({0});
  loop().advance(10);
  EXPECT_EQ(happened(),
            (Lines{"adBreakDidStart break-1 (1 ads, 10 s)", "ping start b/impression",
                   "ping start b/start", "adDidStart b", "ping creativeview b/creativeview",
                   "didUpdateCuepoints [0-10 played]", "GET " + liveDocument}));
}

TEST_F(StreamManager, PassesTheDisplaysErrorOnAsItIsAndGoesOn) {
  openVOD(StreamInfoBuilder::vod().addAd("a", 5).build());
  const auto error = std::make_shared<const Error>(Error{"Player", 7, "broken", nullptr});
  display->reportFailure(error);
  EXPECT_EQ(host->events().back().error, error);
  display->reportFailure(nullptr);
  EXPECT_EQ(host->events().back().line, "didReceiveError (no error object)");
  progress({0});
  EXPECT_EQ(server().pings().size(), 3u);
}

}  // namespace
}  // namespace xel::test
