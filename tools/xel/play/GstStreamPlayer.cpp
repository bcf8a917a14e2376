#include "play/GstStreamPlayer.h"

#include <cmath>
#include <utility>

namespace xel {

std::shared_ptr<GstStreamPlayer> GstStreamPlayer::make(std::shared_ptr<GstMediaPlayer> player) {
  auto made = std::make_shared<GstStreamPlayer>(Token(), std::move(player));
  made->player_->addItemEndObserver(std::shared_ptr<MediaItemEndObserver>(made, made.get()));
  return made;
}

GstStreamPlayer::GstStreamPlayer(Token, std::shared_ptr<GstMediaPlayer> player)
    : player_(std::move(player)), display_(XELAVPlayerVideoDisplay::initWithAVPlayer(player_)) {}

void GstStreamPlayer::setObserver(std::weak_ptr<StreamPlayerObserver> observer) {
  observer_ = std::move(observer);
}

PlayProgress GstStreamPlayer::progress() const {
  const auto& item = display_->playerItem();
  const bool isStarting = item && item->status() != MediaItemStatus::readyToPlay;
  const auto time = isStarting ? 0 : player_->currentTime();
  const auto position = std::isfinite(time) ? time : 0;
  const auto duration = isStarting ? std::nullopt : player_->duration();
  return {position, duration.value_or(position), duration.has_value(),
          !isStarting && !player_->isPlaying()};
}

void GstStreamPlayer::playerItemDidFinishPlaying(const std::shared_ptr<MediaItem>& item) {
  // The display forgets its item when that ends; whether it hears of the end first is not known.
  if (display_->playerItem() && display_->playerItem() != item) return;
  if (const auto observer = observer_.lock()) observer->playerDidEnd();
}

}  // namespace xel
