#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/Error.h"
#include "xel/platform/Export.h"

namespace xel {

class MediaItem;

/// One item of timed metadata: for ID3, a frame identifier such as "TXXX" and the frame's text.
struct MediaMetadataItem {
  std::string key;
  /// Absent where the item has no text.
  std::optional<std::string> value;

  bool operator==(const MediaMetadataItem&) const = default;
};

/// The metadata at one moment, in stream order. Never changes; two moments are told apart by the
/// object. Null where there has been none.
using MediaMetadata = std::shared_ptr<const std::vector<MediaMetadataItem>>;

/// How far a property of an asset has been loaded.
enum class MediaKeyStatus : int { unknown = 0, loading = 1, loaded = 2, failed = 3, cancelled = 4 };

/// Whether an item can be played.
enum class MediaItemStatus : int { unknown = 0, readyToPlay = 1, failed = 2 };

/// What stands behind a stream's URL.
class XEL_EXPORT MediaAsset {
 public:
  struct KeyState {
    MediaKeyStatus status = MediaKeyStatus::unknown;
    /// Why it failed; null where it did not, or nothing is known.
    std::shared_ptr<const Error> error;
  };

  virtual ~MediaAsset();

  /// Loads the properties, and calls `completion` once, on any thread, when each of them is loaded,
  /// failed or cancelled. Never calls it from within this call. Threads: main run loop.
  virtual void loadValuesAsynchronously(const std::vector<std::string>& keys,
                                        std::function<void()> completion) = 0;
  /// Threads: any.
  virtual KeyState stateOfValue(const std::string& key) const = 0;
};

/// The names of an item's properties that can be observed.
inline constexpr std::string_view kMediaItemStatus = "status";
inline constexpr std::string_view kMediaItemTimedMetadata = "timedMetadata";

/// What changed about an observed property.
struct MediaItemChange {
  /// The status now; for `kMediaItemStatus`.
  MediaItemStatus newStatus = MediaItemStatus::unknown;
  /// The metadata before and now; for `kMediaItemTimedMetadata`.
  MediaMetadata oldTimedMetadata = nullptr;
  MediaMetadata newTimedMetadata = nullptr;
};

/// Told of changes of an item. Threads: main run loop.
class XEL_EXPORT MediaItemObserver {
 public:
  virtual ~MediaItemObserver();
  /// @param keyPath the property's name, such as `kMediaItemStatus`.
  /// @param context what the observer registered with.
  virtual void observeValueForKeyPath_ofObject_change_context(std::string_view keyPath,
                                                              MediaItem& object,
                                                              const MediaItemChange& change,
                                                              const void* context) = 0;
};

/// One stream that is or can be played, and what is known of it while it plays.
///
/// Changes are reported from the run loop, never from within a call of the observer's.
/// Ownership: shared between the player and whoever made it. Threads: main run loop.
class XEL_EXPORT MediaItem {
 public:
  virtual ~MediaItem();

  virtual std::shared_ptr<MediaAsset> asset() const = 0;
  /// The properties of the asset that must be loaded before a player can take the item; often none.
  virtual std::vector<std::string> automaticallyLoadedAssetKeys() const = 0;
  virtual MediaItemStatus status() const = 0;
  /// Why the status is failed; otherwise null. Null also where the reason is unknown.
  virtual std::shared_ptr<const Error> error() const = 0;
  /// The metadata that the playhead reached last.
  virtual MediaMetadata timedMetadata() const = 0;

  /// Reports changes of one property from now on; once for each registration. The observer is not
  /// kept alive, and one that is gone is forgotten.
  void addObserver(std::weak_ptr<MediaItemObserver> observer, std::string_view keyPath,
                   const void* context = nullptr);
  /// Takes back the registration made last. Returns false when there is none.
  bool removeObserver(const MediaItemObserver& observer, std::string_view keyPath);

 protected:
  /// Reports to whoever is registered when it begins and is still registered when it is its turn.
  /// The caller keeps the item alive meanwhile.
  void reportChange(std::string_view keyPath, const MediaItemChange& change);

 private:
  struct Registration {
    std::uint64_t number;
    std::weak_ptr<MediaItemObserver> observer;
    std::string keyPath;
    const void* context;
  };

  std::vector<Registration> registrations_;
  std::uint64_t lastNumber_ = 0;
};

/// Told that an item has been played to its end. Threads: main run loop.
class XEL_EXPORT MediaItemEndObserver {
 public:
  virtual ~MediaItemEndObserver();
  virtual void playerItemDidFinishPlaying(const std::shared_ptr<MediaItem>& item) = 0;
};

/// A media player, as `XELAVPlayerVideoDisplay` drives it.
///
/// Implement it over the player that the application has, or use `makeGstMediaPlayer`. Times are
/// seconds of stream time.
/// Ownership: shared between the host and the display. Threads: main run loop; reports come from
/// the run loop, never from within a call.
class XEL_EXPORT MediaPlayer {
 public:
  /// Names a periodic observer of one player; never 0.
  using TimeObserverToken = std::uint64_t;

  virtual ~MediaPlayer();

  /// Never null, whatever the URL: what is wrong with it is told by the item's status.
  virtual std::shared_ptr<MediaAsset> makeAsset(const std::string& url) = 0;
  /// A new item over an asset that this player made. Never null.
  virtual std::shared_ptr<MediaItem> makeItem(const std::shared_ptr<MediaAsset>& asset) = 0;

  /// Shows another item in place of the current one; null shows none. An item can be shown once.
  virtual void replaceCurrentItem(const std::shared_ptr<MediaItem>& item) = 0;
  virtual void play() = 0;
  /// The playhead of the current item; NaN where there is none.
  virtual double currentTime() const = 0;

  /// Calls `function` whenever the playhead has come `interval` seconds further, and after a jump;
  /// not while it stands still. The player owns `function` until the observer is removed, and keeps
  /// it while it runs: it may remove its own observer.
  virtual TimeObserverToken addPeriodicTimeObserver(double interval,
                                                    std::function<void()> function) = 0;
  /// The function does not run again and is released. An unknown token is ignored.
  virtual void removeTimeObserver(TimeObserverToken token) = 0;

  /// Reports every item of this player that ends from now on; once for each registration. The
  /// observer is not kept alive, and one that is gone is forgotten.
  void addItemEndObserver(std::weak_ptr<MediaItemEndObserver> observer);
  /// Takes back all registrations of an observer.
  void removeItemEndObserver(const MediaItemEndObserver& observer);

 protected:
  /// Reports to whoever is registered when it begins and is still registered when it is its turn.
  /// The caller keeps the player alive meanwhile.
  void reportItemEnd(const std::shared_ptr<MediaItem>& item);

 private:
  std::vector<std::weak_ptr<MediaItemEndObserver>> endObservers_;
};

}  // namespace xel
