#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/display/XELVideoDisplay.h"
#include "xel/platform/Export.h"
#include "xel/platform/JSONValue.h"
#include "xel/platform/MediaPlayer.h"

/// A video display over a media player: loads each stream as an item of its own, plays it once it
/// is ready, and reports progress, timed metadata and failure.
///
/// The earlier item stays in the player until the asset of the new one has loaded. An asset that
/// cannot be loaded is only logged: the delegate hears neither of readiness nor of failure then. Of
/// two loads under way, the one that finishes last stays in the player, and the one that was asked
/// for last is reported.
/// Ownership: holds the player, which is the host's to pause and seek, and survives the display
/// with whatever it shows. A delegate may let go of the display, or load another stream, inside any
/// report. Threads: main run loop, whose `Platform` must be installed before the first load.
/// Errors: no operation fails.
class XEL_EXPORT XELAVPlayerVideoDisplay final
    : public XELVideoDisplay,
      public std::enable_shared_from_this<XELAVPlayerVideoDisplay>,
      private xel::MediaItemObserver,
      private xel::MediaItemEndObserver {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null.
  /// @param player not null.
  static std::shared_ptr<XELAVPlayerVideoDisplay> initWithAVPlayer(
      std::shared_ptr<xel::MediaPlayer> player);
  XELAVPlayerVideoDisplay(Token, std::shared_ptr<xel::MediaPlayer> player);
  ~XELAVPlayerVideoDisplay() override;
  XELAVPlayerVideoDisplay(const XELAVPlayerVideoDisplay&) = delete;
  XELAVPlayerVideoDisplay& operator=(const XELAVPlayerVideoDisplay&) = delete;

  void loadURL_withSubtitles(const std::string& url,
                             const std::vector<xel::JSONValue>& subtitles) override;
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) override;

  const std::shared_ptr<xel::MediaPlayer>& player() const noexcept { return player_; }
  /// Those of the last load, for the host to show; the display makes no use of them.
  const std::vector<xel::JSONValue>& subtitles() const noexcept { return subtitles_; }
  /// The item of the last load, until it ends; also before the player has it. Null when idle.
  const std::shared_ptr<xel::MediaItem>& playerItem() const noexcept { return playerItem_; }
  /// Whether a load waits for its stream to become ready.
  bool isPlayRequested() const noexcept { return playRequested_; }

  /// Reports progress from now on, every 0.2 s; no more often if it does already. A stream that
  /// becomes ready starts this by itself.
  void startTracking();
  /// Ends the progress reports, until a stream becomes ready.
  void stopTracking();
  /// Stops tracking and forgets the item, as at the end of a stream. The player goes on with it.
  void reset();

 private:
  std::optional<xel::MediaPlayer::TimeObserverToken> streamPlaybackTimeObserver() const noexcept {
    return streamPlaybackTimeObserver_;
  }
  void setPlayRequested(bool playRequested) noexcept { playRequested_ = playRequested; }

  void setAndObservePlayerItem(std::shared_ptr<xel::MediaItem> item);
  void loadPlayerItem(const std::shared_ptr<xel::MediaItem>& item);
  void reportPlaybackStatus();
  void observeValueForKeyPath_ofObject_change_context(std::string_view keyPath,
                                                      xel::MediaItem& object,
                                                      const xel::MediaItemChange& change,
                                                      const void* context) override;
  void playerItemTimedMetadataDidChange();
  void playerItemStatusDidChange();
  void playerItemDidFinishPlaying(const std::shared_ptr<xel::MediaItem>& item) override;
  template <typename Observer>
  std::weak_ptr<Observer> weakSelf();

  std::weak_ptr<XELVideoDisplayDelegate> delegate_;
  const std::shared_ptr<xel::MediaPlayer> player_;
  std::vector<xel::JSONValue> subtitles_;
  std::shared_ptr<xel::MediaItem> playerItem_;
  std::optional<xel::MediaPlayer::TimeObserverToken> streamPlaybackTimeObserver_;
  bool playRequested_ = false;
};
