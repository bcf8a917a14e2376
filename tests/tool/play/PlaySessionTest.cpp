#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "xel/platform/Platform.h"
#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/simulation.h"

#include "play/ClockDisplay.h"
#include "play/PlaySession.h"

namespace xel {
namespace {

using simulation::StreamInfoBuilder;
using simulation::StreamInitAnswerBuilder;

/// Writes down the events by name; before each, the stream time when it has changed.
class EventNames final : public PlayView {
 public:
  void show(double time, const PlayEvent& event) override {
    if (std::holds_alternative<AdCountdown>(event)) return;
    const auto number = [](double value) { return std::to_string(static_cast<int>(value)); };
    if (std::exchange(time_, time) != time) shown += "@" + number(time) + " ";
    shown += std::visit([](const auto& any) { return any.name; }, event);
    if (const auto* converted = std::get_if<TimeConverted>(&event)) {
      shown += ":" + number(converted->contentTime) + ":" + number(converted->streamTime);
    }
    shown += " ";
  }
  std::string shown;

 private:
  double time_ = 0;
};

class PlaySessionTest : public testing::Test {
 protected:
  void play(std::shared_ptr<XELStreamRequest> request,
            const std::shared_ptr<simulation::TraceRecorder>& recorder = nullptr) {
    isOver = false;
    session = std::make_shared<PlaySession>(view, std::vector{4.0}, [this] { isOver = true; });
    const auto now = [this] { return platform.loop().now(); };
    installed_ = nullptr;
    auto observed = Platform::current();
    const auto observing = std::make_shared<ObservingHTTPClient>(observed.http, session, now);
    observed.http = observing;
    installed_ = std::make_unique<ScopedPlatform>(recorder ? recorder->record(observed) : observed);
    session->start(
        std::make_shared<ClockDisplay>(observing, observed.mainRunLoop, now, std::nullopt), {},
        observing, std::move(request), recorder);
    platform.loop().runUntilIdle();
  }
  std::string shownNext() { return std::exchange(view->shown, {}); }

  simulation::SimulatedPlatform platform;
  simulation::CannedAdServer& server = platform.server();
  const std::string vodURL = platform.vodInitURL("c", "v");
  const std::string liveURL = platform.liveInitURL("a");
  const std::shared_ptr<XELStreamRequest> vod =
      XELVODStreamRequest::initWithContentSourceID_videoID("c", "v");
  const std::shared_ptr<XELStreamRequest> live = XELLiveStreamRequest::initWithAssetKey("a");
  const std::shared_ptr<EventNames> view = std::make_shared<EventNames>();
  std::shared_ptr<PlaySession> session;
  bool isOver = false;

 private:
  std::unique_ptr<ScopedPlatform> installed_;
};

TEST_F(PlaySessionTest, ShowsAnOnDemandStreamAndEndsWithItsLastPing) {
  const auto answer = StreamInitAnswerBuilder::vod();
  server.answer(vodURL, {200, answer.build()});
  server.answer(*answer.timeEventsURL,
                {200, StreamInfoBuilder::vod().addBreak("b", 2).addAd("k", 4).build()});
  server.answer(*answer.manifest, {200, "#EXTM3U\n#EXTINF:8,\na\n#EXT-X-ENDLIST\n"});
  server.answerOtherPings({200, "", 3});
  server.hang("https://tracking.example/k/midpoint");
  play(vod);
  EXPECT_EQ(shownNext(),
            "didInitializeStream didUpdateCuepoints loadURL streamManagerIsReadyForPlayback "
            "conversion:2:8 @2 adBreakDidStart ping ping adDidStart ping "
            "didUpdateCuepoints @3 ping adDidCrossFirstQuartile "
            "@4 ping adDidCrossMidpoint @5 ping adDidCrossThirdQuartile "
            "ping adDidComplete adBreakDidEnd ");
  platform.loop().advance(3);
  EXPECT_FALSE(isOver);
  shownNext();
  platform.loop().advance(3600);
  EXPECT_EQ(shownNext(), "pingResult ");
  EXPECT_TRUE(isOver);
  EXPECT_EQ(session->exitStatus(), 0);
}

TEST_F(PlaySessionTest, PlaysALiveStreamAfterItsPrerollAndStopsPolling) {
  auto answer = StreamInitAnswerBuilder::live();
  answer.prerollManifest = "https://media.example/preroll.m3u8";
  server.answer(liveURL, {200, answer.build()});
  server.answer(*answer.id3EventsURL,
                {200, StreamInfoBuilder::live().addBreak("b", 0).addAd("k", 4).build()});
  server.answer(*answer.prerollManifest,
                {200,
                 "#EXTM3U\n#XEL-TXXX:0,k,start\n#XEL-TXXX:3.9,k,complete\n#EXTINF:4,\na\n"
                 "#EXT-X-ENDLIST\n"});
  server.answer(*answer.manifest, {200, "#EXTM3U\n#EXTINF:1,\na\n#EXT-X-ENDLIST\n"});
  server.answerOtherPings({204, "", 1});
  play(live);
  EXPECT_EQ(shownNext(),
            "didInitializeStream loadURL streamManagerIsReadyForPlayback conversion:4:4 "
            "adBreakDidStart ping ping adDidStart ping @3 ping adDidComplete adBreakDidEnd "
            "@0 loadURL streamManagerIsReadyForPlayback ");
  platform.loop().advance(1);
  EXPECT_TRUE(isOver);
  EXPECT_EQ(session->exitStatus(), 0);
  EXPECT_EQ(platform.loop().timerCount(), 0u);
}

TEST_F(PlaySessionTest, FailsWithTheRequestAndWithTheDisplay) {
  const auto answer = StreamInitAnswerBuilder::vod();
  server.answer(vodURL, {403, "denied"});
  server.answer(vodURL, {200, answer.build()});
  server.answer(*answer.manifest, {500, ""});
  for (const std::string before : {"", "didInitializeStream loadURL "}) {
    play(vod);
    EXPECT_EQ(shownNext(), before + "didReceiveError ");
    EXPECT_TRUE(isOver);
    EXPECT_EQ(session->exitStatus(), 1);
  }
}

TEST_F(PlaySessionTest, FailsWhenTheAnswerNamesNoStreamToPlay) {
  auto answer = StreamInitAnswerBuilder::live().build();
  const std::string manifest = R"("https://media.example/main.m3u8")";
  answer.replace(answer.find(manifest), manifest.size(), "7");
  server.answer(liveURL, {200, answer});
  server.answer(*StreamInitAnswerBuilder::live().id3EventsURL, {200, "{}", 1});
  play(live);
  EXPECT_FALSE(isOver);
  platform.loop().advance(1);
  EXPECT_TRUE(isOver);
  EXPECT_EQ(session->exitStatus(), 1);
  EXPECT_EQ(platform.log().lines().size(), 1u);
}

TEST_F(PlaySessionTest, AbandonedItEndsOnceAndAtOnce) {
  server.hang(liveURL);
  play(live);
  session->abandon(130);
  EXPECT_TRUE(std::exchange(isOver, false));
  platform.loop().advance(60);
  EXPECT_FALSE(isOver);
  EXPECT_EQ(session->exitStatus(), 130);
}

TEST_F(PlaySessionTest, IsRecordedButForWhatThePlayerFetches) {
  const auto answer = StreamInitAnswerBuilder::vod();
  server.answer(vodURL, {200, answer.build()});
  server.answer(*answer.timeEventsURL,
                {200, StreamInfoBuilder::vod().addBreak("b", 2).addAd("k", 4).build()});
  server.answer(*answer.manifest, {200, "#EXTM3U\n#EXTINF:8,\na\n#EXT-X-ENDLIST\n"});
  std::string trace;
  play(vod, std::make_shared<simulation::TraceRecorder>(
                [&trace](std::string_view line) { trace += line; }));
  ASSERT_TRUE(isOver);
  EXPECT_EQ(trace.find("EXTM3U"), std::string::npos);
  for (const auto* line : {"\"kind\":\"release\"}", "\"kind\":\"end\",\"exitStatus\":0}"}) {
    EXPECT_NE(trace.find(line), std::string::npos) << trace;
  }
  std::istringstream in(trace);
  const auto replayed = simulation::replayTrace(in);
  EXPECT_TRUE(replayed.isIdentical());
  EXPECT_EQ(replayed.pings, server.pings().size());
}

}  // namespace
}  // namespace xel
