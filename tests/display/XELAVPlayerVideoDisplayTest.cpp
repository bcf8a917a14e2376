#include <functional>
#include <thread>
#include <utility>

#include "xel/display/XELAVPlayerVideoDisplay.h"

#include "support/PlatformTest.h"
#include "support/Session.h"

namespace xel::test {
namespace {

using Status = MediaItemStatus;

/// A delegate that hands on each report as one line.
struct Listener final : XELVideoDisplayDelegate {
  void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay&, const TimedMetadata& all) override {
    std::string line = "metadata";
    for (const auto& [key, text] : all) line += " " + key + "=" + text;
    onReport(line);
  }
  void videoDisplay_didProgressToTime(XELVideoDisplay&, double time) override {
    onReport("progress " + std::to_string(time).substr(0, 3));
  }
  void videoDisplay_didFailWithError(XELVideoDisplay&,
                                     const std::shared_ptr<const Error>& error) override {
    onReport("failed " + (error ? error->description : "without error"));
  }
  void videoDisplayIsReadyForPlayback(XELVideoDisplay&) override { onReport("ready"); }
  std::function<void(const std::string& report)> onReport;
};

struct XELAVPlayerVideoDisplayTest : PlatformTest {
  XELAVPlayerVideoDisplayTest() { makeAnew(); }
  void makeAnew() {
    player = std::make_shared<ScriptedMediaPlayer>();
    display = XELAVPlayerVideoDisplay::initWithAVPlayer(player);
    listener = std::make_shared<Listener>();
    callsSeen = 0;
    display->setDelegate(listener);
    listener->onReport = [this](const std::string& report) {
      catchUp();
      journal.push_back(report);
    };
  }
  /// Loads a stream as far as the player shows it.
  std::shared_ptr<ScriptedMediaItem> show(const std::string& url) {
    display->loadURL_withSubtitles(url, {});
    const auto item = player->items().back();
    item->finishLoading();
    platform.loop().runUntilIdle();
    return item;
  }
  /// Calls of the player and reports since the last call of this, in order.
  Lines happened() {
    catchUp();
    return std::exchange(journal, {});
  }
  void catchUp() {
    const Lines& calls = player->calls();
    for (; callsSeen < calls.size(); ++callsSeen) journal.push_back(calls[callsSeen]);
  }

  std::shared_ptr<ScriptedMediaPlayer> player;
  std::shared_ptr<XELAVPlayerVideoDisplay> display;
  std::shared_ptr<Listener> listener;
  Lines journal;
  std::size_t callsSeen;
};

TEST_F(XELAVPlayerVideoDisplayTest, LoadsPlaysAndReportsInThisOrder) {
  player->setAssetKeys({{"a", {MediaKeyStatus::loading}}, {"b", {MediaKeyStatus::cancelled}}});
  display->loadURL_withSubtitles("u", {JSONValue::parse("[]").value});
  EXPECT_EQ(happened(), (Lines{"makeAsset u", "makeItem u", "loadValues u a b"}));
  EXPECT_EQ(display->subtitles().size(), 1u);
  EXPECT_TRUE(display->isPlayRequested());
  const auto item = player->items().back();
  std::thread([item] { item->finishLoading(); }).join();
  EXPECT_EQ(happened(), Lines());
  platform.loop().runUntilIdle();
  item->setTXXX("early");
  item->setStatus(Status::unknown);
  EXPECT_EQ(happened(), (Lines{"replaceCurrentItem u", "metadata TXXX=early"}));

  for (int i = 0; i < 2; ++i) item->setStatus(Status::readyToPlay);
  EXPECT_EQ(happened(), (Lines{"ready", "addPeriodicTimeObserver 0.2", "play"}));
  EXPECT_FALSE(display->isPlayRequested());
  player->advance(0.5);
  player->seek(3);
  item->setStatus(Status::failed, std::make_shared<Error>(Error{"d", 1, "gone", nullptr}));
  player->advance(0.2);
  EXPECT_EQ(happened(),
            (Lines{"progress 0.2", "progress 0.4", "progress 3.0", "failed gone", "progress 3.2"}));
}

TEST_F(XELAVPlayerVideoDisplayTest, ReportsTheLastTextOfEachKeyWheneverTheMetadataAreOthers) {
  const auto list = [](std::vector<MediaMetadataItem> items) {
    return std::make_shared<const std::vector<MediaMetadataItem>>(std::move(items));
  };
  const auto item = show("u");
  happened();
  const auto both = list({{"TXXX", "1"}, {"TIT2", "t"}, {"TXXX", "2"}});
  for (const auto& metadata :
       {both, both, list(*both), list({{"TXXX", "3"}, {"TXXX", {}}}), list({}), MediaMetadata()}) {
    item->setTimedMetadata(metadata);
  }
  const std::string texts = "metadata TIT2=t TXXX=2";
  EXPECT_EQ(happened(), (Lines{texts, texts, "metadata", "metadata", "metadata"}));
}

TEST_F(XELAVPlayerVideoDisplayTest, LogsTheFirstKeyThatFailsAndStopsTracking) {
  const auto failed = MediaKeyStatus::failed;
  const auto error = std::make_shared<Error>(Error{"Domain", -7, "no\nkey", nullptr});
  for (const auto& first : {error, std::shared_ptr<Error>()}) {
    player->setAssetKeys({});
    show("earlier")->setStatus(Status::readyToPlay);
    player->setAssetKeys({{"a", {}}, {"b", {failed, first}}, {"c", {failed, error}}});
    happened();
    show("u");
    EXPECT_EQ(happened(),
              (Lines{"makeAsset u", "makeItem u", "loadValues u a b c", "removeTimeObserver"}));
    EXPECT_EQ(display->playerItem(), player->items().back());
  }
  const std::string line = "Error: Was not able to load AVPlayerItem key: ";
  expectedLog = {line + "Domain -7: no key", line + "(null)"};
}

TEST_F(XELAVPlayerVideoDisplayTest, FollowsTheLastLoadOnlyAndUntilItsEnd) {
  const auto first = show("1");
  first->setStatus(Status::readyToPlay);
  const auto second = show("2");
  happened();
  first->setStatus(Status::failed);
  first->setTXXX("late");
  player->endItem(first);
  player->advance(0.2);
  second->setStatus(Status::readyToPlay);
  EXPECT_EQ(happened(), (Lines{"progress 0.2", "ready", "play"}));

  for (int i = 0; i < 2; ++i) player->endItem(second);
  EXPECT_EQ(display->playerItem(), nullptr);
  second->setStatus(Status::failed);
  player->advance(1);
  EXPECT_EQ(happened(), Lines{"removeTimeObserver"});
}

TEST_F(XELAVPlayerVideoDisplayTest, NeedsNeitherItemNorDelegate) {
  display->stopTracking();
  display->reset();
  for (int i = 0; i < 2; ++i) display->startTracking();
  for (int i = 0; i < 2; ++i) display->stopTracking();
  EXPECT_EQ(happened(), (Lines{"addPeriodicTimeObserver 0.2", "removeTimeObserver"}));
  listener.reset();
  const auto item = show("u");
  for (const auto status : {Status::readyToPlay, Status::failed}) item->setStatus(status);
  item->setTXXX("text");
  player->advance(1);
  EXPECT_EQ(player->calls().back(), "play");
}

TEST_F(XELAVPlayerVideoDisplayTest, MayGoWhileItsKeysLoad) {
  display->loadURL_withSubtitles("u", {});
  happened();
  const std::weak_ptr<XELAVPlayerVideoDisplay> remains = display;
  std::thread loader([item = player->items().back()] { item->finishLoading(); });
  display.reset();
  EXPECT_TRUE(remains.expired());
  loader.join();
  platform.loop().runUntilIdle();
  EXPECT_EQ(happened(), Lines());
}

TEST_F(XELAVPlayerVideoDisplayTest, MayGoOrLoadAnotherStreamInAnyReport) {
  const std::pair<const char*, std::function<void()>> actions[] = {
      {"let go of the display", [&] { display.reset(); }},
      {"let go of all", [&] { display.reset(), player.reset(), listener.reset(); }},
      {"let go of the delegate", [&] { listener.reset(); }},
      {"load", [&] { display->loadURL_withSubtitles("next", {}); }},
      {"reset", [&] { display->reset(); }}};
  for (const std::string report : {"ready", "progress", "metadata", "failed"}) {
    for (const auto& [name, act] : actions) {
      SCOPED_TRACE(report + ": " + name);
      makeAnew();
      const std::weak_ptr<ScriptedMediaPlayer> knownPlayer = player;
      const std::weak_ptr<XELAVPlayerVideoDisplay> knownDisplay = display;
      int reportsAfter = -1;
      listener->onReport = [&](const std::string& line) {
        if (reportsAfter >= 0 || line.rfind(report, 0) == 0) ++reportsAfter;
        if (reportsAfter == 0) act();
        EXPECT_FALSE(knownDisplay.expired()) << "within its report";
      };
      const auto item = show("u");
      item->setStatus(Status::readyToPlay);
      if (player) player->advance(0.2);
      item->setTXXX("text");
      item->setStatus(Status::failed);
      EXPECT_EQ(knownDisplay.expired(), !display);
      EXPECT_EQ(knownPlayer.expired(), !player);
      if (player && !display) EXPECT_EQ(player->timeObserverCount(), 0u);
      // Of an item that was let go of before it played, the playhead is still reported.
      EXPECT_EQ(reportsAfter, report == "ready" && display && listener ? 1 : 0);
    }
  }
}

}  // namespace
}  // namespace xel::test
