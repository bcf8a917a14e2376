#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "xel/simulation/simulation.h"

#include "play/GstStreamPlayer.h"
#include "play/Playback.h"
#include "support/PlatformTest.h"
#include "tool/play/PlaybackRecorder.h"

namespace xel {
namespace {

/// A scripted player where a GStreamer player is wanted.
class FakeGstPlayer final : public GstMediaPlayer {
 public:
  std::shared_ptr<MediaAsset> makeAsset(const std::string& url) override {
    return script->makeAsset(url);
  }
  std::shared_ptr<MediaItem> makeItem(const std::shared_ptr<MediaAsset>& asset) override {
    return script->makeItem(asset);
  }
  void replaceCurrentItem(const std::shared_ptr<MediaItem>& item) override {
    script->replaceCurrentItem(item);
  }
  void play() override {
    isToPlay_ = true;
    script->play();
  }
  void pause() override { isToPlay_ = false; }
  bool isPlaying() const override { return isToPlay_; }
  void seek(double seconds) override { target = seconds; }
  double currentTime() const override { return script->currentTime(); }
  std::optional<double> duration() const override { return length; }
  TimeObserverToken addPeriodicTimeObserver(double interval,
                                            std::function<void()> function) override {
    return script->addPeriodicTimeObserver(interval, std::move(function));
  }
  void removeTimeObserver(TimeObserverToken token) override { script->removeTimeObserver(token); }
  void endItem(int number) { reportItemEnd(script->items()[number]); }

  const std::shared_ptr<simulation::ScriptedMediaPlayer> script =
      std::make_shared<simulation::ScriptedMediaPlayer>();
  std::optional<double> length;
  /// Of the last seek, which the test carries out.
  std::optional<double> target;

 private:
  bool isToPlay_ = false;
};

class PlaybackTest : public test::PlatformTest {
 protected:
  void start(PlaybackSettings settings) {
    playback = Playback::make(GstStreamPlayer::make(gst), std::move(settings), recorder);
    playback->display()->setDelegate(recorder);
    playback->display()->loadURL_withSubtitles("https://h.example/1", {});
  }
  void becomeReady() {
    gst->script->items().back()->finishLoading();
    platform.loop().runUntilIdle();
    gst->script->items().back()->setStatus(MediaItemStatus::readyToPlay);
  }
  std::string playedFor(double seconds) {
    gst->script->advance(seconds);
    return recorder->taken();
  }

  const std::shared_ptr<FakeGstPlayer> gst = std::make_shared<FakeGstPlayer>();
  const std::shared_ptr<PlaybackRecorder> recorder = std::make_shared<PlaybackRecorder>();
  std::shared_ptr<Playback> playback;
};

TEST_F(PlaybackTest, SeeksAPlayerThatTakesItsTimeAndPausesItAfterTheDuration) {
  start({{{0.5, 7.1}, {0.1, 80}}, 1.5});
  EXPECT_EQ(playback->progress().position, 0);
  becomeReady();
  EXPECT_EQ(playedFor(0.4), "load ready 0.2 0.4");
  EXPECT_FALSE(playback->progress().isEndFinal) << "as in live streams";
  gst->length = 9;
  EXPECT_EQ(playedFor(0.3), "->7.1");
  EXPECT_EQ(gst->target, 7.1);
  gst->script->seek(7.1);
  EXPECT_EQ(recorder->taken(), "7.1") << "the target itself starts no other seek";
  EXPECT_EQ(playedFor(0.2), "->9") << "beyond the end is the end";
  gst->script->seek(8);
  EXPECT_EQ(playedFor(1), "8 8.2 8.4 8.6 8.8 end") << "0.4 + 0.2 + 0.8, and 9 is too much";
  EXPECT_TRUE(playback->progress().isPaused);
  playback->togglePause();
  playback->seekBy(-5);
  EXPECT_EQ(playedFor(1), "") << "what is over stays over";
}

TEST_F(PlaybackTest, EndsWithTheStreamUnlessAnotherOneIsBeingLoaded) {
  start({});
  becomeReady();
  playback->display()->loadURL_withSubtitles("https://h.example/main", {});
  gst->endItem(0);
  EXPECT_EQ(recorder->taken(), "load ready load");
  becomeReady();
  gst->endItem(1);
  EXPECT_EQ(recorder->taken(), "ready end");
}

/// Sees what passes through a display as words.
class Witness final : public simulation::DisplayObserver {
 public:
  void displayWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) override {
    words += "load:" + url + ":" + std::to_string(subtitles.size()) + " ";
  }
  bool displayWillReport(const simulation::DisplayReport& report) override {
    words += "will:" + std::to_string(report.index()) + " ";
    return !isSilent;
  }
  void displayDidReport(const simulation::DisplayReport& report) override {
    words += "did:" + std::to_string(report.index()) + " ";
  }
  std::string words;
  bool isSilent = false;
};

TEST(ObservingDisplay, PassesEverythingOnUnlessItsObserverKeepsItBack) {
  const auto inner = std::make_shared<simulation::ScriptedDisplay>();
  const auto witness = std::make_shared<Witness>();
  const auto recorder = std::make_shared<PlaybackRecorder>();
  recorder->onWord = [&](const std::string& word) { witness->words += word + " "; };
  const auto outer = simulation::ObservingDisplay::make(inner, witness);
  outer->setDelegate(recorder);
  outer->loadURL_withSubtitles("u", JSONValue::parse("[1,2]").value.elements());
  EXPECT_EQ(inner->loads().back().subtitles.size(), 2u);
  const auto reportAll = [&] {
    inner->reportReady();
    inner->reportTXXX("text");
    inner->reportProgress(1.5);
    inner->reportFailure(std::make_shared<const Error>(Error{"domain", 7, "", nullptr}));
  };
  reportAll();
  EXPECT_EQ(std::exchange(witness->words, {}),
            "load:u:2 will:3 ready did:3 will:0 text did:0 will:1 1.5 did:1 "
            "will:2 domain:7 did:2 ");
  witness->isSilent = true;
  reportAll();
  EXPECT_EQ(witness->words, "will:3 will:0 will:1 will:2 ");
}

}  // namespace
}  // namespace xel
