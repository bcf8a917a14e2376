#include <cctype>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "xel/simulation/SimulatedPlatform.h"

#include "play/ClockDisplay.h"
#include "play/Playback.h"
#include "tool/play/PlaybackRecorder.h"

namespace xel {
namespace {

constexpr auto url = "https://h.example/live/m.m3u8";
constexpr auto atFullSpeed = std::nullopt;

std::string segment(double duration, const std::string& texts = "") {
  return texts + "#EXTINF:" + std::to_string(duration) + ",\ns.ts\n";
}

std::string vod(const std::string& segments) { return "#EXTM3U\n" + segments + "#EXT-X-ENDLIST\n"; }

std::string live(int sequence, const std::string& segments) {
  return "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(sequence) +
         "\n" + segments;
}

class ClockDisplayTest : public testing::Test {
 protected:
  void serve(const std::vector<std::string>& playlists) {
    for (const auto& playlist : playlists) server.answer(url, {200, playlist});
  }
  void play(std::optional<double> speed, PlaybackSettings settings = {}) {
    const auto clock = std::make_shared<ClockDisplay>(
        Platform::current().http, Platform::current().mainRunLoop, [this] { return loop.now(); },
        speed);
    playback = Playback::make(clock, std::move(settings), recorder);
    playback->display()->setDelegate(recorder);
    playback->display()->loadURL_withSubtitles(url, {});
  }
  /// What has been reported since the last call of this, after so many seconds.
  std::string reportedAfter(double seconds) {
    loop.advance(seconds);
    return recorder->taken();
  }

  const simulation::SimulatedPlatform platform;
  simulation::VirtualRunLoop& loop = platform.loop();
  simulation::CannedAdServer& server = platform.server();
  const std::shared_ptr<PlaybackRecorder> recorder = std::make_shared<PlaybackRecorder>();
  std::shared_ptr<Playback> playback;
};

TEST_F(ClockDisplayTest, TextsComeBeforeTheirTickAndTheEndIsATick) {
  serve({vod(segment(0.5, "#XEL-TXXX:0,a\n#XEL-TXXX:0.4,b\n#XEL-TXXX:0.4,c\n") +
             segment(0.2, "#XEL-TXXX:0,d\n#XEL-TXXX:0.3,beyond\n"))});
  play(atFullSpeed);
  EXPECT_EQ(reportedAfter(0), "load ready a 0 0.2 b c 0.4 d 0.6 0.7 end");
}

TEST_F(ClockDisplayTest, SeeksAndPlaysForADuration) {
  const struct {
    const char* behaviour;
    std::vector<Seek> seeks;
    std::optional<double> duration;
    std::string expected;
  } cases[] = {
      {"forward, it skips the texts between", {{0.3, 0.7}}, {}, "0 a 0.2 ->0.7 0.7 c 0.8 z 1 end"},
      {"texts before it still come", {{0.5, 0.8}}, {}, "0 a 0.2 0.4 b ->0.8 c 0.8 z 1 end"},
      {"back, texts come again", {{0.5, 0.2}}, 0.9, "0 a 0.2 0.4 b ->0.2 a 0.2 0.4 b end"},
      {"from the first tick", {{0, 0.9}}, {}, "->0.9 0.9 z 1 end"},
      {"each once, never at the target",
       {{0.4, 0.6}, {0.1, 0.3}},
       0.7,
       "0 a 0.2 ->0.6 0.6 ->0.3 0.3 0.4 end"},
      {"beyond the end", {{0.2, 7}}, {}, "0 ->1 z 1 end"},
      {"jumps do not count", {{0.2, 0.6}}, 0.4, "0 ->0.6 0.6 c 0.8 end"},
  };
  serve({vod(segment(1, "#XEL-TXXX:0.2,a\n#XEL-TXXX:0.45,b\n#XEL-TXXX:0.8,c\n#XEL-TXXX:1,z\n"))});
  for (const auto& [behaviour, seeks, duration, expected] : cases) {
    play(atFullSpeed, {seeks, duration});
    EXPECT_EQ(reportedAfter(0), "load ready " + expected) << behaviour;
  }
}

TEST_F(ClockDisplayTest, LiveSeekWaitsUntilItsTargetIsKnownThoughASegmentIsMissed) {
  serve({live(0, segment(1)), live(0, segment(1) + segment(1, "#XEL-TXXX:0.1,skipped\n")),
         live(3, segment(1)) + "#EXT-X-ENDLIST"});
  play(atFullSpeed, {{{0.2, 2.5}}});
  EXPECT_EQ(reportedAfter(1), "load ready 0 ->2.5 missed:1 2.5 2.6 2.8 3 end");
}

TEST_F(ClockDisplayTest, FailsWithTheManifestAndWithARefresh) {
  server.answer(url, {404, vod("")});
  serve({"<html>", "#EXTM3U\n#EXT-X-STREAM-INF:\na b\n", live(0, segment(0.2)), ""});
  server.fail(url, TransferError::tlsFailed);
  for (const std::string failure :
       {"XELClockPlayerError:1", "XELClockPlayerError:2", "XELClockPlayerError:2",
        "ready 0 XELClockPlayerError:2", "XELTransferError:6"}) {
    play(1);
    EXPECT_EQ(reportedAfter(5), "load " + failure);
  }
}

TEST_F(ClockDisplayTest, TicksAreComputedNotSummed) {
  serve({vod(segment(3000))});
  int tick = 0;
  recorder->onWord = [&](const std::string& word) {
    // The position is that of the tick already.
    if (std::isdigit(word[0]) && playback->progress().position == tick / 5.0) ++tick;
  };
  play(atFullSpeed);
  loop.runUntilIdle();
  EXPECT_EQ(tick, 15001);
}

TEST_F(ClockDisplayTest, LiveStandsStillWhileItFetchesAndSeesTextsOfTheNextSegmentInTime) {
  server.answer(url, {200, live(5, segment(1))});
  server.answer(url, {200, live(5, segment(1) + segment(1, "#XEL-TXXX:0,next\n")), 0.5});
  serve({live(6, segment(1)), live(6, segment(1) + segment(0.3)) + "#EXT-X-ENDLIST"});
  play(2);
  EXPECT_EQ(reportedAfter(0.9), "load ready 0 0.2 0.4 0.6 0.8");
  EXPECT_EQ(reportedAfter(0.1), "next 1");
  // At 2 nothing new has come: asked again after half a target duration.
  EXPECT_EQ(reportedAfter(0.74), "1.2 1.4 1.6 1.8");
  EXPECT_EQ(server.requests().size(), 3u);
  EXPECT_EQ(reportedAfter(0.01), "2");
  EXPECT_EQ(reportedAfter(1), "2.2 2.3 end");
  EXPECT_EQ(server.requests().size(), 4u) << "a finished playlist is not fetched again";
  EXPECT_EQ(loop.timerCount(), 0u);
}

TEST_F(ClockDisplayTest, ASeekTakesNoTimeAndLiveIsFetchedByPlayedTime) {
  serve({live(0, segment(3))});
  play(1, {{{1.4, 0.4}}, 2.6});
  EXPECT_TRUE(reportedAfter(1.3).ends_with("1.2"));
  EXPECT_EQ(reportedAfter(0.15), "->0.4 0.4");
  EXPECT_EQ(reportedAfter(0.2), "0.6");
  EXPECT_EQ(reportedAfter(1), "0.8 1 1.2 1.4 1.6 end") << "with the tick, not with the next";
  EXPECT_EQ(server.requests().size(), 3u);
}

TEST_F(ClockDisplayTest, StandsStillWhilePausedAndSeeksInEveryState) {
  server.answer(url, {200, live(0, segment(2)), 0.5});
  server.answer(url, {200, vod(segment(4)), 0.5});
  play(1);
  playback->seekBy(0.5);
  EXPECT_EQ(reportedAfter(0.9), "load ->0.5 ready 0.5 0.6 0.8") << "while the playlist is fetched";
  playback->togglePause();
  playback->seekBy(0.2);
  EXPECT_EQ(reportedAfter(5), "->1");
  EXPECT_TRUE(playback->progress().isPaused);
  playback->togglePause();
  EXPECT_EQ(reportedAfter(0.25), "1 1.2");
  playback->seekBy(-9);
  EXPECT_EQ(reportedAfter(0.25), "->0 0 0.2");
  playback->seekBy(3);
  EXPECT_EQ(reportedAfter(9), "->3.2 3.2 3.4 3.6 3.8 4 end");
  EXPECT_EQ(loop.timerCount(), 0u);
}

TEST_F(ClockDisplayTest, AnotherStreamReplacesItAtOnceAndPlayedTimeGoesOn) {
  const std::string otherURL = "https://h.example/main/m.m3u8";
  server.answer(url, {200, vod(segment(1)), 0.5});
  serve({vod(segment(1, "#XEL-TXXX:0.3,text\n"))});
  server.answer(otherURL, {200, "#EXTM3U\n#EXT-X-STREAM-INF:A=1\n../v.m3u8?x=1\n"});
  server.answer("https://h.example/v.m3u8?x=1", {200, vod(segment(1))});
  play(atFullSpeed, {{}, 0.6});
  playback->display()->loadURL_withSubtitles(otherURL, {});
  EXPECT_EQ(reportedAfter(1), "load load ready 0 0.2 0.4 0.6 end");

  const std::pair<std::string, std::string> cases[] = {
      {"ready", "load ready load ready 0 0.2 0.4 0.6 end"},
      {"text", "load ready 0 0.2 text load ready 0 0.2 end"},
      {"0.4", "load ready 0 0.2 text 0.4 load ready 0 0.2 end"},
  };
  for (const auto& [replaceAt, expected] : cases) {
    recorder->onWord = [&](const std::string& word) {
      if (word != replaceAt) return;
      recorder->onWord = nullptr;
      playback->display()->loadURL_withSubtitles(otherURL, {});
    };
    play(atFullSpeed, {{}, 0.6});
    EXPECT_EQ(reportedAfter(1), expected);
  }
}

TEST_F(ClockDisplayTest, MayBeLetGoOfInAnyReport) {
  server.answer(url, {200, vod(segment(0.4, "#XEL-TXXX:0.1,a\n"))});
  for (const std::string last : {"ready", "a", "0.2", "end"}) {
    for (const auto speed : {std::optional<double>(1), std::optional<double>()}) {
      SCOPED_TRACE(last);
      std::weak_ptr<XELVideoDisplay> released;
      recorder->onWord = [&](const std::string& word) {
        if (word != last) return;
        released = playback->display();
        playback = nullptr;
      };
      play(speed);
      loop.advance(1);
      EXPECT_TRUE(released.expired());
      EXPECT_EQ(playback, nullptr);
      EXPECT_EQ(loop.timerCount(), 0u);
    }
  }
}

}  // namespace
}  // namespace xel
