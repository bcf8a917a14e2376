#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "xel/display/XELAVPlayerVideoDisplay.h"
#include "xel/gstreamer/GstMediaPlayer.h"
#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"
#include "xel/simulation/RecordingLog.h"

namespace xel {

inline std::shared_ptr<GstMediaPlayer> makePlayer() {
  GstMediaPlayerOptions options;
  options.output = GstOutput::none;
  return makeGstMediaPlayer(options);
}

/// A platform with a loop that these tests run; no test needs the network client.
struct PlayerTest : testing::Test {
  static std::shared_ptr<StandardRunLoop> loop() { return StandardRunLoop::main(); }
};

/// A stream behind a display, and what its delegate heard.
class PlayedStream final : public XELVideoDisplayDelegate,
                           public MediaItemEndObserver,
                           public std::enable_shared_from_this<PlayedStream> {
 public:
  struct Seen {
    std::string text;
    /// Seconds of stream time: the playhead when the text was delivered.
    double position;
  };

  static std::shared_ptr<PlayedStream> play(const std::string& url) {
    auto stream = std::make_shared<PlayedStream>();
    stream->display->setDelegate(stream);
    stream->player->addItemEndObserver(stream);
    stream->display->loadURL_withSubtitles(url, {});
    return stream;
  }
  /// Runs the loop until the stream is over.
  void runToEnd() {
    while (!isOver()) {
      whenChanged = [] { StandardRunLoop::main()->stop(); };
      StandardRunLoop::main()->run();
    }
  }
  bool isOver() const { return hasEnded || !failures.empty() || !isWanted; }
  /// Calls `action` on the first progress at or after `position`, in the order of these calls.
  void at(double position, std::function<void()> action) {
    steps.emplace_back(position, std::move(action));
  }
  void stop() {
    isWanted = false;
    if (whenChanged) whenChanged();
  }

  void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay&, const TimedMetadata& map) override {
    report("metadata");
    for (const auto& [key, text] : map) {
      seen.push_back({text, player ? player->currentTime() : 0});
    }
  }
  void videoDisplay_didProgressToTime(XELVideoDisplay&, double time) override {
    ++ticks;
    lastTime = time;
    report("progress");
    if (steps.empty() || time < steps.front().first) return;
    const auto action = std::move(steps.front().second);
    steps.pop_front();
    action();
  }
  void videoDisplay_didFailWithError(XELVideoDisplay&,
                                     const std::shared_ptr<const Error>& error) override {
    failures.push_back(error ? error->description : "no error");
    if (whenChanged) whenChanged();
  }
  void videoDisplayIsReadyForPlayback(XELVideoDisplay&) override {
    ++readies;
    report("ready");
  }
  void playerItemDidFinishPlaying(const std::shared_ptr<MediaItem>&) override {
    hasEnded = true;
    if (whenChanged) whenChanged();
  }

  void report(const char* kind) {
    if (awaitedReport != kind || !inReport) return;
    const auto action = std::exchange(inReport, nullptr);
    action();
  }

  std::shared_ptr<GstMediaPlayer> player = makePlayer();
  std::shared_ptr<XELAVPlayerVideoDisplay> display =
      XELAVPlayerVideoDisplay::initWithAVPlayer(player);
  std::function<void()> whenChanged;
  /// Called within the next report of one kind, once.
  std::string awaitedReport;
  std::function<void()> inReport;
  std::deque<std::pair<double, std::function<void()>>> steps;
  std::vector<Seen> seen;
  std::vector<std::string> failures;
  int readies = 0;
  int ticks = 0;
  double lastTime = -1;
  bool hasEnded = false;
  bool isWanted = true;
};

}  // namespace xel
