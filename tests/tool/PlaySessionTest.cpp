#include <algorithm>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "xel/platform/Platform.h"
#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/SimulatedPlatform.h"
#include "xel/simulation/StreamInfoBuilder.h"
#include "xel/simulation/StreamInitAnswerBuilder.h"

#include "PlaySession.h"

namespace xel {
namespace {

using simulation::StreamInfoBuilder;
using simulation::StreamInitAnswerBuilder;

/// Writes down the events by name, with what tells them apart.
class EventNames final : public PlayView {
 public:
  void show(double time, const PlayEvent& event) override {
    if (std::holds_alternative<AdCountdown>(event)) return;
    std::string line(std::visit([](const auto& any) { return any.name; }, event));
    if (const auto* ad = std::get_if<AdEvent>(&event)) line += " " + *ad->ad->adKey();
    if (const auto* sent = std::get_if<PingSent>(&event)) line += " " + sent->pingEvent;
    if (const auto* answered = std::get_if<PingAnswered>(&event)) {
      line += " " + answered->pingEvent + " " +
              (answered->error ? "error" : std::to_string(answered->status));
    }
    if (const auto* converted = std::get_if<TimeConverted>(&event)) {
      line += " " + std::to_string(static_cast<int>(converted->contentTime)) + " " +
              std::to_string(static_cast<int>(converted->streamTime));
    }
    lines.push_back(line);
    times.push_back(time);
  }
  std::vector<std::string> lines;
  std::vector<double> times;
};

class PlaySessionTest : public testing::Test {
 protected:
  void play(std::shared_ptr<XELStreamRequest> request,
            const std::vector<double>& conversions = {}) {
    session = std::make_shared<PlaySession>(view, conversions, [this] { isOver = true; });
    const auto now = [this] { return platform.loop().now(); };
    installed_ = nullptr;
    auto observed = Platform::current();
    const auto observing = std::make_shared<ObservingHTTPClient>(observed.http, session, now);
    observed.http = observing;
    installed_ = std::make_unique<ScopedPlatform>(observed);
    session->start(std::make_shared<ClockDisplay>(observing, observed.mainRunLoop, now,
                                                  ClockDisplay::Settings{std::nullopt, {}, {}}),
                   observing, std::move(request));
    platform.loop().runUntilIdle();
  }

  simulation::SimulatedPlatform platform;
  const std::shared_ptr<EventNames> view = std::make_shared<EventNames>();
  std::shared_ptr<PlaySession> session;
  bool isOver = false;

 private:
  std::unique_ptr<ScopedPlatform> installed_;
};

TEST_F(PlaySessionTest, ShowsAnOnDemandStreamAndEndsWithItsLastPing) {
  auto& server = platform.server();
  const auto answer = StreamInitAnswerBuilder::vod();
  auto info = StreamInfoBuilder::vod();
  info.addBreak("b", 2).addAd("k", 4);
  server.answer(platform.vodInitURL("c", "v"), {200, answer.build()});
  server.answer(*answer.timeEventsURL, {200, info.build()});
  server.answer(*answer.manifest, {200, "#EXTM3U\n#EXTINF:8,\na\n#EXT-X-ENDLIST\n"});
  server.answerOtherPings({200, "", 3});
  server.hang("https://tracking.example/k/midpoint");
  play(XELVODStreamRequest::initWithContentSourceID_videoID("c", "v"), {4});

  EXPECT_EQ(view->lines, (std::vector<std::string>{"didInitializeStream",
                                                   "didUpdateCuepoints",
                                                   "loadURL",
                                                   "streamManagerIsReadyForPlayback",
                                                   "conversion 2 8",
                                                   "adBreakDidStart",
                                                   "ping start",
                                                   "ping start",
                                                   "adDidStart k",
                                                   "ping creativeview",
                                                   "didUpdateCuepoints",
                                                   "ping firstquartile",
                                                   "adDidCrossFirstQuartile k",
                                                   "ping midpoint",
                                                   "adDidCrossMidpoint k",
                                                   "ping thirdquartile",
                                                   "adDidCrossThirdQuartile k",
                                                   "ping complete",
                                                   "adDidComplete k",
                                                   "adBreakDidEnd"}));
  EXPECT_EQ(view->times[4], 0);
  EXPECT_EQ(view->times[5], 2);

  view->lines.clear();
  platform.loop().advance(3);
  EXPECT_FALSE(isOver);
  EXPECT_EQ(view->lines.size(), 6u);
  platform.loop().advance(3600);
  EXPECT_EQ(view->lines.back(), "pingResult midpoint error");
  EXPECT_TRUE(isOver);
  EXPECT_EQ(session->exitStatus(), 0);
}

TEST_F(PlaySessionTest, PlaysALiveStreamAfterItsPrerollAndStopsPolling) {
  auto& server = platform.server();
  auto answer = StreamInitAnswerBuilder::live();
  answer.prerollManifest = "https://media.example/preroll.m3u8";
  auto info = StreamInfoBuilder::live();
  info.addBreak("b", 0).addAd("k", 4);
  std::string texts;
  for (const auto& event : info.events()) {
    texts += "#XEL-TXXX:" + std::to_string(event.time) + "," + event.text + "\n";
  }
  server.answer(platform.liveInitURL("a"), {200, answer.build()});
  server.answer(*answer.id3EventsURL, {200, info.build()});
  server.answer(*answer.prerollManifest,
                {200, "#EXTM3U\n" + texts + "#EXTINF:4,\na\n#EXT-X-ENDLIST\n"});
  server.answer(*answer.manifest, {200, "#EXTM3U\n#EXTINF:1,\na\n#EXT-X-ENDLIST\n"});
  play(XELLiveStreamRequest::initWithAssetKey("a"), {5});

  const auto& lines = view->lines;
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "loadURL"), 2);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "streamManagerIsReadyForPlayback"), 2);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "conversion 5 5"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "adDidComplete k"), 1);
  platform.loop().advance(1);
  EXPECT_TRUE(isOver);
  EXPECT_EQ(session->exitStatus(), 0);
  EXPECT_EQ(platform.loop().timerCount(), 0u);
}

TEST_F(PlaySessionTest, FailsWithTheRequestAndWithTheDisplay) {
  platform.server().answer(platform.vodInitURL("c", "refused"), {403, "denied"});
  play(XELVODStreamRequest::initWithContentSourceID_videoID("c", "refused"));
  EXPECT_EQ(view->lines, std::vector<std::string>{"didReceiveError"});
  EXPECT_TRUE(isOver);
  EXPECT_EQ(session->exitStatus(), 1);

  isOver = false;
  const auto answer = StreamInitAnswerBuilder::vod();
  platform.server().answer(platform.vodInitURL("c", "v"), {200, answer.build()});
  platform.server().answer(*answer.manifest, {500, ""});
  play(XELVODStreamRequest::initWithContentSourceID_videoID("c", "v"));
  EXPECT_EQ(view->lines.back(), "didReceiveError");
  EXPECT_TRUE(isOver);
  EXPECT_EQ(session->exitStatus(), 1);
}

TEST_F(PlaySessionTest, AbandonedItEndsOnceAndAtOnce) {
  platform.server().hang(platform.liveInitURL("a"));
  play(XELLiveStreamRequest::initWithAssetKey("a"));
  session->abandon(130);
  EXPECT_TRUE(isOver);
  isOver = false;
  platform.loop().advance(60);
  EXPECT_FALSE(isOver);
  EXPECT_EQ(session->exitStatus(), 130);
}

}  // namespace
}  // namespace xel
