#pragma once

#include <memory>

#include "xel/display/XELAVPlayerVideoDisplay.h"
#include "xel/gstreamer/GstMediaPlayer.h"

#include "play/StreamPlayer.h"

namespace xel {

/// Plays real streams: a GStreamer player behind the library's display for media players.
///
/// A stream that ends while the next one is being loaded, such as a pre-roll, is not told as an
/// end. Threads: main run loop.
class GstStreamPlayer final : public StreamPlayer, private MediaItemEndObserver {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null.
  /// @param player not null.
  static std::shared_ptr<GstStreamPlayer> make(std::shared_ptr<GstMediaPlayer> player);
  GstStreamPlayer(Token, std::shared_ptr<GstMediaPlayer> player);

  std::shared_ptr<XELVideoDisplay> display() override { return display_; }
  void setObserver(std::weak_ptr<StreamPlayerObserver> observer) override;
  PlayProgress progress() const override;
  void play() override { player_->play(); }
  void pause() override { player_->pause(); }
  void seek(double to) override { player_->seek(to); }

 private:
  void playerItemDidFinishPlaying(const std::shared_ptr<MediaItem>& item) override;

  const std::shared_ptr<GstMediaPlayer> player_;
  const std::shared_ptr<XELAVPlayerVideoDisplay> display_;
  std::weak_ptr<StreamPlayerObserver> observer_;
};

}  // namespace xel
