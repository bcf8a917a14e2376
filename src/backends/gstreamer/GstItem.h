#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "xel/gstreamer/GstMediaPlayer.h"
#include "xel/platform/MediaPlayer.h"
#include "xel/platform/RunLoop.h"

#include "backends/gstreamer/GObjects.h"
#include "backends/gstreamer/PipelineThread.h"
#include "backends/gstreamer/StallWatch.h"
#include "backends/gstreamer/StreamSource.h"

namespace xel {

/// What the items of one player have in common.
struct GstItemSettings {
  GstOutput output = GstOutput::automatic;
  GstElementHandle videoSink;
  GstElementHandle audioSink;
  /// Held by the item that has the given sinks; null where none are given.
  std::shared_ptr<std::mutex> sinkTurn;
  std::shared_ptr<RunLoop> runLoop;
};

/// An asset of which nothing has to be loaded before a player can take its item.
class GstAsset final : public MediaAsset {
 public:
  GstAsset(std::string url, std::shared_ptr<RunLoop> runLoop)
      : url_(std::move(url)), runLoop_(std::move(runLoop)) {}

  const std::string& url() const noexcept { return url_; }
  void loadValuesAsynchronously(const std::vector<std::string>& keys,
                                std::function<void()> completion) override;
  KeyState stateOfValue(const std::string& key) const override;

 private:
  const std::string url_;
  const std::shared_ptr<RunLoop> runLoop_;
};

/// One stream in a pipeline of its own, from `start` to `stop`.
///
/// Threads: main run loop.
class GstItem final : public MediaItem, public std::enable_shared_from_this<GstItem> {
 public:
  GstItem(std::shared_ptr<GstAsset> asset, std::shared_ptr<const GstItemSettings> settings);

  std::shared_ptr<MediaAsset> asset() const override { return asset_; }
  std::vector<std::string> automaticallyLoadedAssetKeys() const override { return {}; }
  MediaItemStatus status() const override { return status_; }
  std::shared_ptr<const Error> error() const override { return error_; }
  MediaMetadata timedMetadata() const override { return metadata_; }

  /// Loads the stream, and plays it when it is ready if it is to play. Once in an item's life.
  void start(bool isToPlay, std::function<void()> whenEnded);
  /// Ends playback for good; nothing is reported any more.
  void stop();
  bool isStarted() const noexcept { return thread_ != nullptr; }
  void setToPlay(bool isToPlay);
  void seek(double seconds);
  /// Seconds of stream time: the target while the playhead moves there, 0 until the item is ready.
  double position() const;
  std::optional<double> duration() const noexcept { return duration_; }
  bool isSeeking() const noexcept { return seekTarget_.has_value(); }
  /// Grows whenever the playhead has arrived at the target of a seek.
  std::uint64_t jumps() const noexcept { return jumps_; }
  /// Whether there is something to follow: the playhead moves, or is about to.
  bool isActive() const noexcept;
  /// Delivers the metadata that the playhead has reached, and tells when playback has stopped for
  /// good. To be called often.
  /// @param now seconds of a steady clock.
  void follow(double now);

 private:
  struct BusHandlers;
  void makePipeline();
  void watchBus();
  void handleBegun() { isWatchToRestart_ = true; }
  void handleAsyncDone();
  void handleBuffering(int percent);
  void handleLatency();
  void handleClockLost();
  void handleEnd();
  void handleError(std::shared_ptr<const Error> error);
  void becomeReadyIfLoaded();
  void fail(std::shared_ptr<const Error> error);
  void setStatus(MediaItemStatus status);
  void deliverTagsUntil(double position);
  void judgeStandstill(double now);
  void applyState();
  void startSeek(double seconds);
  void finishSeekIfDone();
  void finishSeek();
  void askDuration();
  std::optional<double> queryPosition() const;
  /// A function for another thread that runs `handler` on the main one, if the item still plays.
  template <typename... Values>
  std::function<void(Values...)> onMain(void (GstItem::*handler)(Values...));
  void handleSeekIssued(bool isAccepted);
  void handleDuration(double seconds) { duration_ = seconds; }

  const std::shared_ptr<GstAsset> asset_;
  const std::shared_ptr<const GstItemSettings> settings_;
  MediaItemStatus status_ = MediaItemStatus::unknown;
  std::shared_ptr<const Error> error_;
  MediaMetadata metadata_;
  std::optional<double> duration_;
  double lastPosition_ = 0;

  GstElementHandle pipeline_;
  std::unique_ptr<PipelineThread> thread_;
  std::shared_ptr<StreamSource> source_;
  std::function<void()> whenEnded_;
  StallWatch watch_;
  /// What stood still so far was meant to.
  bool isWatchToRestart_ = true;
  /// Seconds of the steady clock.
  std::optional<double> begunAt_;
  /// A fault that has been told, while there still is media to play.
  std::shared_ptr<const Error> pendingError_;
  bool isToPlay_ = false;
  bool isPlaying_ = false;
  bool isBuffering_ = false;
  bool isPrerolled_ = false;
  bool isEnded_ = false;
  /// Where the playhead is moving to.
  std::optional<double> seekTarget_;
  bool isSeekIssued_ = false;
  /// Where it is to move after that, or when the item is ready.
  std::optional<double> nextSeek_;
  std::uint64_t jumps_ = 0;
};

}  // namespace xel
