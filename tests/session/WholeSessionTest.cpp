#include "xel/display/XELAVPlayerVideoDisplay.h"

#include "support/Session.h"

namespace xel::test {
namespace {

TEST_F(SessionTest, OfAWholeOnDemandStreamHappensInThisOrder) {
  auto info = StreamInfoBuilder::vod();
  info.addBreak("pre", 0).addAd("a", 4).addBreak("mid", 10).addAd("b", 4).addAd("c", 2);
  auto answer = StreamInitAnswerBuilder::vod();
  answer.subtitles = {{{.language = "en"}}};
  open(answer, info.build());
  display->reportReady();
  display->play(0, 30);
  const Lines expected = {
      "POST " + vodURL, "didInitializeStream stream-1", "GET https://ads.example/vod.json",
      "didUpdateCuepoints [0-4] [10-16]",
      R"(load https://media.example/main.m3u8 {"language":"en"})",
      "streamManagerIsReadyForPlayback",
      // The first break.
      "adBreakDidStart pre (1 ads, 4 s)", "ping start a/impression", "ping start a/start",
      "adDidStart a", "ping creativeview a/creativeview", "didUpdateCuepoints [0-4 played] [10-16]",
      "ping firstquartile a/firstquartile", "adDidCrossFirstQuartile a", "ping midpoint a/midpoint",
      "adDidCrossMidpoint a", "ping thirdquartile a/thirdquartile", "adDidCrossThirdQuartile a",
      "ping complete a/complete", "adDidComplete a", "adBreakDidEnd pre",
      // The second break.
      "adBreakDidStart mid (2 ads, 6 s)", "ping start b/impression", "ping start b/start",
      "adDidStart b", "ping creativeview b/creativeview",
      "didUpdateCuepoints [0-4 played] [10-16 played]", "ping firstquartile b/firstquartile",
      "adDidCrossFirstQuartile b", "ping midpoint b/midpoint", "adDidCrossMidpoint b",
      "ping thirdquartile b/thirdquartile", "adDidCrossThirdQuartile b", "ping complete b/complete",
      "adDidComplete b",
      // Its second ad.
      "ping start c/impression", "ping start c/start", "adDidStart c",
      "ping creativeview c/creativeview", "ping firstquartile c/firstquartile",
      "adDidCrossFirstQuartile c", "ping midpoint c/midpoint", "adDidCrossMidpoint c",
      "ping thirdquartile c/thirdquartile", "adDidCrossThirdQuartile c", "ping complete c/complete",
      "adDidComplete c", "adBreakDidEnd mid"};
  EXPECT_EQ(happened(), expected);
}

TEST_F(SessionTest, OfAWholeLiveStreamWithPrerollHappensInThisOrder) {
  auto answer = StreamInitAnswerBuilder::live();
  answer.subtitles = {{{.language = "en"}}};
  answer.prerollManifest = "https://media.example/preroll.m3u8";
  answer.pollingFrequency = 5;
  auto info = StreamInfoBuilder::live();
  server().answer(liveDocument, {200, info.addBreak("pre", 0).addAd("p", 3).build()});
  open(answer, info.addBreak("mid", 5).addAd("b", 4).addAd("c", 2).build());

  const auto play = [&](double from, double to) {
    const auto marks = info.events();
    for (double tick = from; tick <= to; ++tick) {
      for (const auto& mark : marks) {
        if (tick - 1 < mark.time && mark.time <= tick) display->reportTXXX(mark.text);
      }
      display->reportProgress(tick);
      loop().advance(1);
    }
  };
  display->reportReady();
  play(0, 3);
  display->reportReady();
  countdowns = true;
  play(4, 12);
  const Lines expected = {
      "POST " + liveURL, "didInitializeStream stream-1", "GET https://ads.example/live.json",
      "load https://media.example/preroll.m3u8", "streamManagerIsReadyForPlayback",
      // The pre-roll.
      "adBreakDidStart pre (1 ads, 3 s)", "ping start p/impression", "ping start p/start",
      "adDidStart p", "ping creativeview p/creativeview", "ping firstquartile p/firstquartile",
      "adDidCrossFirstQuartile p", "ping midpoint p/midpoint", "adDidCrossMidpoint p",
      "ping thirdquartile p/thirdquartile", "adDidCrossThirdQuartile p", "ping complete p/complete",
      "adDidComplete p", "adBreakDidEnd pre",
      // The stream, whose break the second document holds.
      R"(load https://media.example/main.m3u8 {"language":"en"})",
      "streamManagerIsReadyForPlayback", "GET https://ads.example/live.json",
      "adBreakDidStart mid (2 ads, 6 s)", "ping start b/impression", "ping start b/start",
      "adDidStart b", "ping creativeview b/creativeview", "didCountdownTo b 3",
      "ping firstquartile b/firstquartile", "adDidCrossFirstQuartile b", "didCountdownTo b 2",
      "ping midpoint b/midpoint", "adDidCrossMidpoint b", "didCountdownTo b 1",
      "ping thirdquartile b/thirdquartile", "adDidCrossThirdQuartile b", "didCountdownTo b 0",
      "ping complete b/complete", "adDidComplete b",
      // Its second ad.
      "ping start c/impression", "ping start c/start", "adDidStart c",
      "ping creativeview c/creativeview", "didCountdownTo c 1", "GET https://ads.example/live.json",
      "ping firstquartile c/firstquartile", "adDidCrossFirstQuartile c", "ping midpoint c/midpoint",
      "adDidCrossMidpoint c", "didCountdownTo c 0", "ping thirdquartile c/thirdquartile",
      "adDidCrossThirdQuartile c", "ping complete c/complete", "adDidComplete c",
      "adBreakDidEnd mid"};
  EXPECT_EQ(happened(), expected);
}

TEST_F(SessionTest, OfAStreamInAMediaPlayerRunsFromItsRequestToItsEnd) {
  const auto player = std::make_shared<ScriptedMediaPlayer>();
  manager =
      XELStreamManager::initWithVideoDisplay(XELAVPlayerVideoDisplay::initWithAVPlayer(player));
  manager->setDelegate(host);
  openVOD(StreamInfoBuilder::vod().addBreak("mid", 2).addAd("a", 4).build());
  ASSERT_EQ(player->items().size(), 1u);
  EXPECT_EQ(player->items()[0]->url(), "https://media.example/main.m3u8");
  player->items()[0]->finishLoading();
  loop().runUntilIdle();
  player->currentItem()->setStatus(MediaItemStatus::readyToPlay);
  player->advance(9);
  player->endItem(player->currentItem());
  player->currentItem()->setStatus(MediaItemStatus::failed);
  const Lines expected = {
      "POST " + vodURL, "didInitializeStream stream-1", "GET https://ads.example/vod.json",
      "didUpdateCuepoints [2-6]", "streamManagerIsReadyForPlayback",
      // The break.
      "adBreakDidStart mid (1 ads, 4 s)", "ping start a/impression", "ping start a/start",
      "adDidStart a", "ping creativeview a/creativeview", "didUpdateCuepoints [2-6 played]",
      "ping firstquartile a/firstquartile", "adDidCrossFirstQuartile a", "ping midpoint a/midpoint",
      "adDidCrossMidpoint a", "ping thirdquartile a/thirdquartile", "adDidCrossThirdQuartile a",
      "ping complete a/complete", "adDidComplete a", "adBreakDidEnd mid"};
  EXPECT_EQ(happened(), expected);
  EXPECT_EQ(player->timeObserverCount(), 0u);
}

}  // namespace
}  // namespace xel::test
