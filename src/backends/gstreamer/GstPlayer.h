#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "xel/gstreamer/GstMediaPlayer.h"

#include "backends/gstreamer/GstItem.h"

namespace xel {

/// The player behind `makeGstMediaPlayer`: one item at a time, followed by a timer while there is
/// something to follow.
class GstPlayer final : public GstMediaPlayer, public std::enable_shared_from_this<GstPlayer> {
 public:
  explicit GstPlayer(std::shared_ptr<const GstItemSettings> settings);
  ~GstPlayer() override;
  GstPlayer(const GstPlayer&) = delete;
  GstPlayer& operator=(const GstPlayer&) = delete;

  std::shared_ptr<MediaAsset> makeAsset(const std::string& url) override;
  std::shared_ptr<MediaItem> makeItem(const std::shared_ptr<MediaAsset>& asset) override;
  void replaceCurrentItem(const std::shared_ptr<MediaItem>& item) override;
  void play() override { setToPlay(true); }
  void pause() override { setToPlay(false); }
  bool isPlaying() const override { return isToPlay_; }
  void seek(double seconds) override;
  double currentTime() const override;
  std::optional<double> duration() const override;
  TimeObserverToken addPeriodicTimeObserver(double interval,
                                            std::function<void()> function) override;
  void removeTimeObserver(TimeObserverToken token) override { timeObservers_.erase(token); }

 private:
  struct TimeObserver {
    double interval;
    /// Shared, so that it outlives its registration while it runs.
    std::shared_ptr<const std::function<void()>> function;
    /// Where the playhead was when it ran last; absent when it is to run at the next chance.
    std::optional<double> time = std::nullopt;
  };

  void setToPlay(bool isToPlay);
  void followWhileActive();
  void follow();
  void runTimeObservers();
  void runAllAtNextChance();
  void handleItemEnd();

  const std::shared_ptr<const GstItemSettings> settings_;
  std::shared_ptr<GstItem> item_;
  bool isToPlay_ = false;
  std::uint64_t jumps_ = 0;
  RunLoop::TimerID timer_ = 0;
  std::map<TimeObserverToken, TimeObserver> timeObservers_;
  TimeObserverToken lastToken_ = 0;
};

}  // namespace xel
