#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xel/simulation/CannedAdServer.h"
#include "xel/simulation/VirtualRunLoop.h"

#include "ClockDisplay.h"

namespace xel {
namespace {

using simulation::CannedAdServer;
using simulation::VirtualRunLoop;
using Lines = std::vector<std::string>;

constexpr auto url = "https://h.example/live/m.m3u8";

std::string number(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

class Recorder final : public XELVideoDisplayDelegate, public ClockDisplayObserver {
 public:
  void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay&, const TimedMetadata& data) override {
    add("text " + data.at("TXXX"));
  }
  void videoDisplay_didProgressToTime(XELVideoDisplay&, double time) override { add(number(time)); }
  void videoDisplay_didFailWithError(XELVideoDisplay&,
                                     const std::shared_ptr<const Error>& error) override {
    add(error->domain + " " + std::to_string(error->code) + ": " + error->description);
  }
  void videoDisplayIsReadyForPlayback(XELVideoDisplay&) override { add("ready"); }
  void clockWillLoad(const std::string& loaded, const std::vector<JSONValue>&) override {
    add("load " + loaded);
  }
  void clockDidTick() override {}
  void clockDidMiss(std::uint64_t segments) override { add("missed " + std::to_string(segments)); }
  void clockDidEnd() override { add("end"); }

  Lines lines;
  std::function<void(const std::string&)> onLine;

 private:
  void add(const std::string& line) {
    lines.push_back(line);
    if (const auto action = onLine) action(line);
  }
};

std::string segment(double duration, const std::string& texts = "") {
  return texts + "#EXTINF:" + number(duration) + ",\ns.ts\n";
}

std::string vod(const std::string& segments) { return "#EXTM3U\n" + segments + "#EXT-X-ENDLIST\n"; }

std::string live(int sequence, const std::string& segments, bool isFinished = false) {
  return "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(sequence) +
         "\n" + segments + (isFinished ? "#EXT-X-ENDLIST\n" : "");
}

class ClockDisplayTest : public testing::Test {
 protected:
  void play(ClockDisplay::Settings settings) {
    display = std::make_shared<ClockDisplay>(
        server, loop, [clock = loop.get()] { return clock->now(); }, std::move(settings));
    display->setDelegate(recorder);
    display->setObserver(recorder);
    display->loadURL_withSubtitles(url, {});
    loop->runUntilIdle();
  }
  ClockDisplay::Settings atFullSpeed() { return {std::nullopt, {}, {}}; }
  /// What was reported since the last time.
  Lines reported() { return std::exchange(recorder->lines, {}); }

  const std::shared_ptr<VirtualRunLoop> loop = std::make_shared<VirtualRunLoop>();
  const std::shared_ptr<CannedAdServer> server = std::make_shared<CannedAdServer>(loop);
  const std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
  std::shared_ptr<ClockDisplay> display;
};

TEST_F(ClockDisplayTest, DeliversTextsBeforeTheirTickAndTheEndThatIsNoMultiple) {
  server->answer(url, {200, vod(segment(0.5, "#XEL-TXXX:0,a\n#XEL-TXXX:0.4,b\n#XEL-TXXX:0.4,c\n") +
                                segment(0.2, "#XEL-TXXX:0,d\n#XEL-TXXX:0.3,beyond\n"))});
  play(atFullSpeed());
  EXPECT_EQ(reported(), (Lines{std::string("load ") + url, "ready", "text a", "0", "0.2", "text b",
                               "text c", "0.4", "text d", "0.6", "0.7", "end"}));
}

TEST_F(ClockDisplayTest, TicksAreComputedNotSummed) {
  server->answer(url, {200, vod(segment(3000))});
  std::vector<double> wrong;
  int tick = 0;
  recorder->onLine = [&](const std::string& line) {
    if (line == "end" || line == "ready" || line.starts_with("load")) return;
    // The position is that of the tick already.
    if (display->position() != tick / 5.0) wrong.push_back(display->position());
    ++tick;
  };
  play(atFullSpeed());
  EXPECT_EQ(tick, 15001);
  EXPECT_EQ(wrong, std::vector<double>{});
}

TEST_F(ClockDisplayTest, KeepsTimeAtItsSpeed) {
  server->answer(url, {200, vod(segment(10)), 0.35});
  play({2.0, {}, {}});
  loop->advance(0.34);
  EXPECT_EQ(reported(), Lines{std::string("load ") + url});
  loop->advance(0.01);
  EXPECT_EQ(reported(), (Lines{"ready", "0"}));
  loop->advance(0.3);
  EXPECT_EQ(reported(), (Lines{"0.2", "0.4", "0.6"}));
  loop->advance(60);
  EXPECT_EQ(recorder->lines.back(), "end");
  EXPECT_EQ(loop->timerCount(), 0u);
}

TEST_F(ClockDisplayTest, VeryFastClocksReportEveryTick) {
  server->answer(url, {200, vod(segment(100))});
  play({10000, {}, {}});
  loop->advance(0.011);
  EXPECT_EQ(recorder->lines.size(), 2u + 501u + 1u);
}

TEST_F(ClockDisplayTest, LiveStandsStillWhileItFetchesAndSeesTextsOfTheNextSegmentInTime) {
  server->answer(url, {200, live(5, segment(1))});
  server->answer(url, {200, live(5, segment(1) + segment(1, "#XEL-TXXX:0,next\n")), 0.5});
  server->answer(url, {200, live(6, segment(1)), 0});
  server->answer(url, {200, live(6, segment(1) + segment(0.3), true)});
  play({1.0, {}, {}});
  loop->advance(1.4);
  EXPECT_EQ(reported(),
            (Lines{std::string("load ") + url, "ready", "0", "0.2", "0.4", "0.6", "0.8"}));
  loop->advance(0.1);
  EXPECT_EQ(reported(), (Lines{"text next", "1"}));
  // At 2 nothing new has come: asked again after half a target duration.
  loop->advance(1.49);
  EXPECT_EQ(reported(), (Lines{"1.2", "1.4", "1.6", "1.8"}));
  EXPECT_EQ(server->requests().size(), 3u);
  loop->advance(0.01);
  EXPECT_EQ(reported(), Lines{"2"});
  loop->advance(1);
  EXPECT_EQ(reported(), (Lines{"2.2", "2.3", "end"}));
  EXPECT_EQ(server->requests().size(), 4u) << "a finished playlist is not fetched again";
}

TEST_F(ClockDisplayTest, LiveIsFetchedEveryTargetDurationOfStreamTimeAtAnySpeed) {
  server->answer(url, {200, live(0, segment(2) + segment(2) + segment(2))});
  auto settings = atFullSpeed();
  settings.duration = 4.5;
  play(settings);
  EXPECT_EQ(server->requests().size(), 1u + 4u);
  EXPECT_EQ(recorder->lines.back(), "end");
}

TEST_F(ClockDisplayTest, LiveFetchesNothingBeyondTheDuration) {
  server->answer(url, {200, live(0, segment(1))});
  play({std::nullopt, {}, 0.9});
  EXPECT_EQ(server->requests().size(), 1u);
  EXPECT_EQ(recorder->lines.back(), "end");
}

TEST_F(ClockDisplayTest, SaysHowManySegmentsItMissed) {
  server->answer(url, {200, live(0, segment(1))});
  server->answer(url, {200, live(4, segment(0.2), true)});
  play(atFullSpeed());
  EXPECT_EQ(reported(), (Lines{std::string("load ") + url, "ready", "0", "0.2", "0.4", "0.6", "0.8",
                               "missed 3", "1", "1.2", "end"}));
}

struct SeekCase {
  const char* behaviour;
  std::vector<Seek> seeks;
  std::optional<double> duration;
  Lines expected;
};

class ClockDisplaySeek : public ClockDisplayTest, public testing::WithParamInterface<SeekCase> {};

TEST_P(ClockDisplaySeek, Reports) {
  server->answer(
      url, {200, vod(segment(
                     1, "#XEL-TXXX:0.2,a\n#XEL-TXXX:0.45,b\n#XEL-TXXX:0.8,c\n#XEL-TXXX:1,z\n"))});
  play({std::nullopt, GetParam().seeks, GetParam().duration});
  const auto all = reported();
  EXPECT_EQ(Lines(all.begin() + 2, all.end()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    , ClockDisplaySeek,
    testing::Values(
        SeekCase{"ForwardSkipsTextsBetween",
                 {{0.3, 0.7}},
                 {},
                 {"0", "text a", "0.2", "0.7", "text c", "0.8", "text z", "1", "end"}},
        SeekCase{"TextsBeforeAtAreStillDelivered",
                 {{0.5, 0.8}},
                 {},
                 {"0", "text a", "0.2", "0.4", "text b", "text c", "0.8", "text z", "1", "end"}},
        SeekCase{"BackwardDeliversTextsAgain",
                 {{0.6, 0.2}},
                 {},
                 {"0", "text a", "0.2", "0.4", "text b", "text a", "0.2", "0.4", "text b", "0.6",
                  "text c", "0.8", "text z", "1", "end"}},
        SeekCase{"FromTheFirstTick", {{0, 0.9}}, {}, {"0.9", "text z", "1", "end"}},
        SeekCase{"InOrderEachOnceAndNeverAtTheTarget",
                 {{0.4, 0.6}, {0.1, 0.3}},
                 {},
                 {"0", "text a", "0.2", "0.6", "0.3", "0.4", "text b", "0.6", "text c", "0.8",
                  "text z", "1", "end"}},
        SeekCase{"BeyondTheEndGoesToTheEnd", {{0.2, 7}}, {}, {"0", "text z", "1", "end"}},
        SeekCase{
            "NotReached",
            {{1.1, 0}},
            {},
            {"0", "text a", "0.2", "0.4", "text b", "0.6", "text c", "0.8", "text z", "1", "end"}},
        SeekCase{"DurationIsReportedToo", {}, 0.4, {"0", "text a", "0.2", "0.4", "end"}},
        SeekCase{
            "DurationDoesNotCountJumps", {{0.2, 0.6}}, 0.4, {"0", "0.6", "text c", "0.8", "end"}},
        SeekCase{"DurationCountsWhatIsPlayedTwice",
                 {{0.4, 0}},
                 0.6,
                 {"0", "text a", "0.2", "0", "text a", "0.2", "end"}}),
    [](const auto& param) { return param.param.behaviour; });

TEST_F(ClockDisplayTest, SeekingTakesNoTimeAndDoesNotChangeHowOftenLiveIsFetched) {
  server->answer(url, {200, live(0, segment(3))});
  play({1.0, {{1.4, 0.4}}, 2.0});
  loop->advance(1.3);
  reported();
  loop->advance(0.15);
  EXPECT_EQ(reported(), Lines{"0.4"});
  loop->advance(0.2);
  EXPECT_EQ(reported(), Lines{"0.6"});
  EXPECT_EQ(server->requests().size(), 2u);
  loop->advance(5);
  EXPECT_EQ(reported(), (Lines{"0.8", "1", "end"}));
  EXPECT_EQ(server->requests().size(), 3u);
}

TEST_F(ClockDisplayTest, LiveSeekWaitsUntilItsTargetIsKnown) {
  server->answer(url, {200, live(0, segment(1))});
  server->answer(url, {200, live(0, segment(1) + segment(1, "#XEL-TXXX:0.1,skipped\n"))});
  server->answer(url, {200, live(1, segment(1) + segment(1), true)});
  play({std::nullopt, {{0.2, 2.5}}, {}});
  loop->advance(1);
  EXPECT_EQ(reported(),
            (Lines{std::string("load ") + url, "ready", "0", "2.5", "2.6", "2.8", "3", "end"}));
}

TEST_F(ClockDisplayTest, AnotherStreamBeginsAtOnceAndPlayedTimeGoesOn) {
  const std::string main = "https://h.example/main.m3u8";
  server->answer(url, {200, vod(segment(1, "#XEL-TXXX:0.4,complete\n"))});
  server->answer(main, {200, vod(segment(1))});
  recorder->onLine = [&](const std::string& line) {
    if (line == "text complete") display->loadURL_withSubtitles(main, {});
  };
  auto settings = atFullSpeed();
  settings.duration = 0.8;
  play(settings);
  EXPECT_EQ(reported(), (Lines{std::string("load ") + url, "ready", "0", "0.2", "text complete",
                               "load " + main, "ready", "0", "0.2", "0.4", "end"}));
}

TEST_F(ClockDisplayTest, NothingIsHeardOfAStreamThatWasReplacedBeforeItPlayed) {
  const std::string main = "https://h.example/main.m3u8";
  server->answer(url, {200, vod(segment(5)), 0.5});
  server->answer(main, {200, vod(segment(0.2)), 0.2});
  play({1.0, {}, {}});
  display->loadURL_withSubtitles(main, {});
  loop->advance(5);
  const Lines played = {"load " + main, "ready", "0", "0.2", "end"};
  EXPECT_EQ(Lines(recorder->lines.begin() + 1, recorder->lines.end()), played);

  reported();
  recorder->onLine = [&](const std::string& line) {
    if (line != "ready") return;
    recorder->onLine = nullptr;
    display->loadURL_withSubtitles(main, {});
  };
  display->loadURL_withSubtitles(url, {});
  loop->advance(5);
  EXPECT_EQ(Lines(recorder->lines.begin() + 2, recorder->lines.end()), played);
  EXPECT_EQ(server->requests().size(), 4u);
}

TEST_F(ClockDisplayTest, MayBeLetGoOfInAnyReport) {
  server->answer(url, {200, vod(segment(0.4, "#XEL-TXXX:0.1,a\n"))});
  for (const std::string last : {"ready", "text a", "0.2", "end"}) {
    for (const auto speed : {std::optional<double>(1), std::optional<double>()}) {
      SCOPED_TRACE(last);
      std::weak_ptr<ClockDisplay> released;
      recorder->onLine = [&](const std::string& line) {
        if (line == last) released = std::exchange(display, nullptr);
      };
      play({speed, {}, {}});
      loop->advance(1);
      EXPECT_TRUE(released.expired());
      EXPECT_EQ(display, nullptr);
      EXPECT_EQ(loop->timerCount(), 0u);
    }
  }
}

TEST_F(ClockDisplayTest, FollowsAMasterPlaylistToItsFirstVariant) {
  server->answer(url, {200, "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\n../v.m3u8\n"});
  server->answer("https://h.example/v.m3u8", {200, vod(segment(0.2))});
  play(atFullSpeed());
  EXPECT_EQ(reported(), (Lines{std::string("load ") + url, "ready", "0", "0.2", "end"}));
}

struct FailureCase {
  const char* behaviour;
  int status;
  const char* body;
  const char* expected;
};

class ClockDisplayFailure : public ClockDisplayTest,
                            public testing::WithParamInterface<FailureCase> {};

TEST_P(ClockDisplayFailure, IsReportedForTheManifestAndForARefresh) {
  server->answer(url, {GetParam().status, GetParam().body});
  play(atFullSpeed());
  EXPECT_EQ(reported(), (Lines{std::string("load ") + url, GetParam().expected}));

  const std::string growing = "https://h.example/growing.m3u8";
  server->answer(growing, {200, live(0, segment(0.2))});
  server->answer(growing, {GetParam().status, GetParam().body});
  display->loadURL_withSubtitles(growing, {});
  loop->advance(5);
  ASSERT_EQ(recorder->lines.size(), 4u);
  EXPECT_EQ(recorder->lines[2], "0");
  EXPECT_TRUE(recorder->lines[3].starts_with("XELClockPlayerError"));
}

INSTANTIATE_TEST_SUITE_P(
    , ClockDisplayFailure,
    testing::Values(
        FailureCase{"Status", 404, "",
                    "XELClockPlayerError 1: Unable to play https://h.example/live/m.m3u8: HTTP "
                    "status 404"},
        FailureCase{"NoPlaylist", 200, "<html>",
                    "XELClockPlayerError 2: Unable to play https://h.example/live/m.m3u8: not a "
                    "media playlist, it does not begin with #EXTM3U"},
        FailureCase{"VariantWithoutURL", 200, "#EXTM3U\n#EXT-X-STREAM-INF:\na b\n",
                    "XELClockPlayerError 2: Unable to play https://h.example/live/m.m3u8: not a "
                    "media playlist, its first variant stream has no valid URL"}),
    [](const auto& param) { return param.param.behaviour; });

TEST_F(ClockDisplayTest, PassesTransferErrorsOn) {
  server->fail(url, TransferError::tlsFailed);
  play({1.0, {}, {}});
  loop->advance(5);
  ASSERT_EQ(recorder->lines.size(), 2u);
  EXPECT_TRUE(recorder->lines[1].starts_with("XELTransferError 6")) << recorder->lines[1];
}

}  // namespace
}  // namespace xel
