#include "support/Session.h"

namespace xel::test {
namespace {

const std::string goodVOD = StreamInitAnswerBuilder::vod().build();
const std::string mainManifest = "https://media.example/main.m3u8";

std::string summary(const Error& error) {
  return error.domain + " " + std::to_string(error.code) + " " + error.description;
}

struct FailureCase {
  const char* behaviour;
  CannedAnswer answer;
  Lines expected;
  Lines log = {};
};

class StreamInitFailure : public SessionTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(StreamInitFailure, ReachesTheHostAndLeavesTheManagerUsable) {
  server().answer(vodURL, GetParam().answer);
  manager->requestStream(vodRequest());
  loop().advance(6);
  Lines heard;
  for (const auto& event : host->events()) {
    heard.push_back(event.error ? summary(*event.error) : event.line);
    if (event.error && event.error->underlying) {
      heard.push_back(event.error->underlying->domain + " " +
                      std::to_string(event.error->underlying->code));
    }
  }
  EXPECT_EQ(heard, GetParam().expected);
  EXPECT_EQ(manager->contentTimeForStreamTime(7), 0);
  expectedLog = GetParam().log;

  server().answer(vodURL, {200, goodVOD});
  manager->requestStream(vodRequest());
  loop().runUntilIdle();
  EXPECT_EQ(host->events().back().line, "didInitializeStream stream-1");
  EXPECT_EQ(manager->contentTimeForStreamTime(7), 7);
}

FailureCase notJSON(const char* behaviour, std::string body, int code) {
  return {behaviour,
          {200, std::move(body)},
          {"XELError " + std::to_string(code) + " Stream request failed with internal error",
           "XELJSONError " + std::to_string(code)}};
}

FailureCase invalid(const char* behaviour, std::string body) {
  return {
      behaviour, {200, std::move(body)}, {"XELError 0 Stream initialized with invalid response"}};
}

FailureCase badType(const char* behaviour, std::string members, std::string streamID = "s") {
  return {behaviour,
          {200, R"({"stream_manifest": "https://media.example/main.m3u8", )" + members + "}"},
          {streamID.empty() ? "didInitializeStream" : "didInitializeStream " + streamID,
           "XELError 0 Stream initialized with invalid stream type"}};
}

INSTANTIATE_TEST_SUITE_P(
    , StreamInitFailure,
    testing::Values(
        FailureCase{"SlowerThanFiveSeconds",
                    {200, goodVOD, 5.1},
                    {"XELError 3 Unable to request stream", "XELTransferError 3"}},
        FailureCase{"Status400", {400, ""}, {"XELHttpError 400 Stream initialization failed: "}},
        FailureCase{"Status403",
                    {403, "denied"},
                    {"XELHttpError 403 Stream initialization failed: denied"}},
        FailureCase{"Status500WithGoodBody",
                    {500, goodVOD},
                    {"XELHttpError 500 Stream initialization failed: " + goodVOD}},
        FailureCase{"Status404WithBodyThatIsNotUTF8",
                    {404, "\xFF\xFE"},
                    {"XELHttpError 404 Stream initialization failed: (null)"}},
        notJSON("Text", "denied", 1), notJSON("Empty", "", 2), notJSON("Cut", R"({"a": 1)", 2),
        notJSON("BareNumber", "42", 4), notJSON("BareText", R"("stream_id")", 4),
        notJSON("BareNull", "null", 4), notJSON("BareTrue", "true", 4),
        invalid("EmptyObject", "{}"), invalid("Array", R"([{"stream_id": "s"}])"),
        invalid("NoStreamID", R"({"stream_manifest": "https://media.example/main.m3u8"})"),
        invalid("NoManifest", R"({"stream_id": "s", "stream_type": "live"})"),
        badType("NoType", R"("stream_id": "s")"),
        badType("UnknownType", R"("stream_id": "s", "stream_type": "Live")"),
        badType("TypeThatIsNoText", R"("stream_id": "s", "stream_type": 1)"),
        badType("StreamIDThatIsNoText", R"("stream_id": 7)", "")),
    [](const auto& info) { return info.param.behaviour; });

using Manager = SessionTest;

TEST_F(Manager, WrapsEveryTransferErrorWithItsCode) {
  for (int code = 1; code <= 12; ++code) {
    server().fail(liveURL, static_cast<TransferError>(code));
    manager->requestStream(liveRequest());
    loop().runUntilIdle();
    const auto& error = host->events().back().error;
    ASSERT_TRUE(error && error->underlying);
    EXPECT_EQ(summary(*error), "XELError " + std::to_string(code) + " Unable to request stream");
    EXPECT_EQ(error->underlying->domain, transferErrorDomain);
    EXPECT_EQ(error->underlying->code, code);
  }
}

TEST_F(Manager, RefusesARequestOfAnotherKindLaterAndWithoutSendingIt) {
  struct OtherRequest : XELStreamRequest {};
  for (const auto& request : {std::shared_ptr<XELStreamRequest>(new OtherRequest), {}}) {
    manager->requestStream(request);
    EXPECT_EQ(happened(), Lines());
    loop().runUntilIdle();
    EXPECT_EQ(happened(), Lines{"didReceiveError XELError 0: Unable to request stream"});
  }
  expectedLog = {2, "Error: Invalid stream request"};
}

TEST_F(Manager, TakesAStatusBelow400ForSuccess) {
  for (const int status : {200, 204, 302, 399}) {
    server().answer(vodURL, {status, goodVOD, 4.9});
    manager->requestStream(vodRequest());
    loop().advance(5);
  }
  EXPECT_EQ(host->lines(), Lines(4, "didInitializeStream stream-1"));
}

TEST_F(Manager, LoadsNothingWhenTheManifestIsNoText) {
  for (const char* type : {"live", "on_demand"}) {
    const bool live = std::string(type) == "live";
    server().answer(live ? liveURL : vodURL,
                    {200, R"({"stream_id": null, "stream_manifest": [], "subtitles": 3,
                              "id3_events_url": {}, "time_events_url": false,
                              "preroll_manifest": 1, "stream_type": ")" +
                              std::string(type) + "\"}"});
    if (live) manager->requestStream(liveRequest());
    if (!live) manager->requestStream(vodRequest());
    loop().advance(60);
    EXPECT_EQ(happened(), (Lines{"POST " + (live ? liveURL : vodURL), "didInitializeStream"}));
  }
  expectedLog = {2, "Internal Error: No tracking pings for this stream."};
}

TEST_F(Manager, SendsOneCorrelatorPerProcess) {
  const auto other = XELStreamManager::initWithVideoDisplay(display);
  manager->requestStream(liveRequest());
  other->requestStream(vodRequest());
  const auto correlator = [this](std::size_t i) {
    const std::string& body = server().requests().at(i).request.body;
    return body.substr(0, body.find('&'));
  };
  EXPECT_EQ(correlator(0), correlator(1));
  const std::string digits = correlator(0).substr(std::string("correlator=").size());
  EXPECT_EQ(correlator(0), "correlator=" + digits);
  EXPECT_EQ(std::to_string(std::stoull(digits)), digits);
  EXPECT_LT(std::stoull(digits), 0xFFFFFFFFu);
}

TEST_F(Manager, GivesEachAnswerAMonitorAndTheRequestMadeLast) {
  auto first = liveRequest();
  auto second = vodRequest();
  first->setManifestURLSuffix("from=first");
  second->setManifestURLSuffix("from=second");
  auto live = StreamInitAnswerBuilder::live();
  live.streamID = "live";
  live.id3EventsURL.reset();
  server().answer(liveURL, {200, live.build(), 2});
  server().answer(vodURL, {200, goodVOD, 1});
  auto info = StreamInfoBuilder::vod();
  server().answer("https://ads.example/vod.json", {200, info.addAd("a", 5).build()});
  manager->requestStream(first);
  manager->requestStream(second);
  loop().advance(1);
  EXPECT_EQ(manager->contentTimeForStreamTime(6), 1);
  loop().advance(1);
  EXPECT_EQ(manager->contentTimeForStreamTime(6), 6);
  EXPECT_EQ(happened(), (Lines{"POST " + liveURL, "POST " + vodURL, "didInitializeStream stream-1",
                               "GET https://ads.example/vod.json", "didUpdateCuepoints [0-5]",
                               "load " + mainManifest + "?from=second", "didInitializeStream live",
                               "load " + mainManifest + "?from=second"}));
  expectedLog = {"Internal Error: No tracking pings for this stream."};
}

TEST_F(Manager, FollowsTheStreamRequestedWhileAnotherRuns) {
  auto info = StreamInfoBuilder::live();
  openLive(info.addAd("a", 10).build());
  metadata({"a,start"});
  auto vod = StreamInfoBuilder::vod();
  openVOD(vod.addAd("b", 10).build());
  happened();
  metadata({"a,midpoint"});
  EXPECT_EQ(manager->contentTimeForStreamTime(4), 0);
  progress({0});
  loop().advance(10);
  EXPECT_EQ(happened(),
            (Lines{"adBreakDidStart break-1 (1 ads, 10 s)", "ping start b/impression",
                   "ping start b/start", "adDidStart b", "ping creativeview b/creativeview",
                   "didUpdateCuepoints [0-10 played]", "GET https://ads.example/live.json"}));
}

TEST_F(Manager, KnowsNoTimesBeforeThereIsAStreamAndKeepsThoseOfALiveOne) {
  EXPECT_EQ(manager->streamTimeForContentTime(12.5), 0);
  EXPECT_EQ(manager->contentTimeForStreamTime(12.5), 0);
  EXPECT_EQ(manager->previousCuepointForStreamTime(12.5), nullptr);
  openLive(StreamInfoBuilder::vod().addAd("a", 5).build());
  EXPECT_EQ(manager->streamTimeForContentTime(12.5), 12.5);
  EXPECT_EQ(manager->contentTimeForStreamTime(12.5), 12.5);
  EXPECT_EQ(manager->previousCuepointForStreamTime(12.5), nullptr);
}

TEST_F(Manager, PassesTheDisplaysErrorOnAsItIsAndGoesOn) {
  openVOD(StreamInfoBuilder::vod().addAd("a", 5).build());
  const auto error = std::make_shared<const Error>(Error{"Player", 7, "broken", nullptr});
  display->reportFailure(error);
  EXPECT_EQ(host->events().back().error, error);
  display->reportFailure(nullptr);
  EXPECT_EQ(host->events().back().line, "didReceiveError (no error object)");
  progress({0});
  EXPECT_EQ(server().pings().size(), 3u);
}

TEST_F(Manager, NeedsNoMoreThanTheRequiredOperationsOfAHost) {
  struct RequiredOnly final : XELStreamManagerDelegate {
    void streamManager_didInitializeStream(XELStreamManager&, const std::string& id) override {
      heard.push_back(id);
    }
    void streamManager_didReceiveError(XELStreamManager&,
                                       const std::shared_ptr<const Error>&) override {
      heard.push_back("error");
    }
    Lines heard;
  };
  const auto minimal = std::make_shared<RequiredOnly>();
  manager->setDelegate(minimal);
  openVOD(StreamInfoBuilder::vod().addAd("a", 4).build());
  display->reportReady();
  display->play(0, 6);
  display->reportFailure(nullptr);
  EXPECT_EQ(minimal->heard, (Lines{"stream-1", "error"}));
  EXPECT_EQ(server().pings().size(), 7u);
}

TEST_F(Manager, GoesOnWithoutAHost) {
  host.reset();
  openVOD(StreamInfoBuilder::vod().addAd("a", 4).build());
  display->reportReady();
  display->play(0, 6);
  display->reportFailure(nullptr);
  EXPECT_EQ(server().pings().size(), 7u);
  server().answer(vodURL, {500, ""});
  manager->requestStream(vodRequest());
  loop().runUntilIdle();
}

}  // namespace
}  // namespace xel::test
