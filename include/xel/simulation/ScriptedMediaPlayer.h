#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "xel/platform/Export.h"
#include "xel/platform/MediaPlayer.h"
#include "xel/simulation/ScriptedMediaItem.h"

namespace xel::simulation {

/// A media player that plays nothing: it writes down what is asked of it, and reports what the
/// test tells it to.
///
/// One load behind a display goes like this: `items().back()->finishLoading()`, the run loop runs,
/// `currentItem()->setStatus(MediaItemStatus::readyToPlay)`, `advance(seconds)`.
/// Make it with `std::make_shared`. It keeps itself alive during its reports, so whoever hears them
/// may let go of it. Threads: main run loop.
class XEL_EXPORT ScriptedMediaPlayer final
    : public MediaPlayer,
      public std::enable_shared_from_this<ScriptedMediaPlayer> {
 public:
  /// A key and what becomes of it when it is loaded.
  using AssetKey = std::pair<std::string, MediaAsset::KeyState>;

  ScriptedMediaPlayer();
  ~ScriptedMediaPlayer() override;

  /// The keys of the assets that are made from now on; none until set.
  void setAssetKeys(std::vector<AssetKey> keys) { assetKeys_ = std::move(keys); }

  /// The calls of this player and of its assets, in order, each as its name and its arguments:
  /// "makeAsset URL", "makeItem URL", "loadValues URL KEY...", "replaceCurrentItem URL" or
  /// "replaceCurrentItem none", "play", "addPeriodicTimeObserver SECONDS", "removeTimeObserver".
  const std::vector<std::string>& calls() const noexcept { return *calls_; }
  /// Every item, in the order of making.
  const std::vector<std::shared_ptr<ScriptedMediaItem>>& items() const noexcept { return items_; }
  /// Null when none is shown.
  std::shared_ptr<ScriptedMediaItem> currentItem() const noexcept { return currentItem_; }
  std::size_t timeObserverCount() const noexcept { return timeObservers_.size(); }

  /// Moves the playhead forward and reports it to each observer at every interval; the rest is
  /// dropped when another item takes over meanwhile. Does nothing before `play`, and without an
  /// item. Counts whole nanoseconds, so that many small steps make exactly one large one.
  /// @param seconds not negative; less counts as 0.
  void advance(double seconds);
  /// Puts the playhead elsewhere, and reports it to each observer.
  /// @param seconds of stream time; less than 0 counts as 0.
  void seek(double seconds);
  /// Reports the end of an item, the current one or another.
  void endItem(const std::shared_ptr<MediaItem>& item);

  std::shared_ptr<MediaAsset> makeAsset(const std::string& url) override;
  std::shared_ptr<MediaItem> makeItem(const std::shared_ptr<MediaAsset>& asset) override;
  void replaceCurrentItem(const std::shared_ptr<MediaItem>& item) override;
  void play() override;
  double currentTime() const override;
  TimeObserverToken addPeriodicTimeObserver(double interval,
                                            std::function<void()> function) override;
  void removeTimeObserver(TimeObserverToken token) override;

 private:
  using Nanoseconds = std::int64_t;
  struct TimeObserver {
    Nanoseconds interval;
    Nanoseconds due;
    /// Shared, so that it outlives its registration while it runs.
    std::shared_ptr<const std::function<void()>> function;
  };

  void runObserversDue();

  const std::shared_ptr<std::vector<std::string>> calls_;
  std::vector<AssetKey> assetKeys_;
  std::vector<std::shared_ptr<ScriptedMediaItem>> items_;
  std::shared_ptr<ScriptedMediaItem> currentItem_;
  bool isPlaying_ = false;
  Nanoseconds playhead_ = 0;
  std::map<TimeObserverToken, TimeObserver> timeObservers_;
  TimeObserverToken lastToken_ = 0;
};

}  // namespace xel::simulation
