#include "xel/display/XELAVPlayerVideoDisplay.h"

#include <algorithm>
#include <utility>

#include "xel/platform/Platform.h"

#include "platform/Text.h"

namespace {

constexpr double progressInterval = 0.2;

/// What the loading of an item's asset keeps until it is done.
struct PendingLoad {
  std::shared_ptr<xel::MediaItem> item;
  std::shared_ptr<xel::MediaAsset> asset;
  std::vector<std::string> keys;
};

/// The state of the first key that could not be loaded.
std::optional<xel::MediaAsset::KeyState> failureOf(const PendingLoad& load) {
  for (const std::string& key : load.keys) {
    const auto state = load.asset->stateOfValue(key);
    if (state.status == xel::MediaKeyStatus::failed) return state;
  }
  return std::nullopt;
}

/// Absent for no error.
std::optional<std::string> debugDescription(const std::shared_ptr<const xel::Error>& error) {
  if (!error) return std::nullopt;
  std::string text = error->domain + " " + std::to_string(error->code) + ": " + error->description;
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return text;
}

}  // namespace

std::shared_ptr<XELAVPlayerVideoDisplay> XELAVPlayerVideoDisplay::initWithAVPlayer(
    std::shared_ptr<xel::MediaPlayer> player) {
  return std::make_shared<XELAVPlayerVideoDisplay>(Token(), std::move(player));
}

XELAVPlayerVideoDisplay::XELAVPlayerVideoDisplay(Token, std::shared_ptr<xel::MediaPlayer> player)
    : player_(std::move(player)) {}

XELAVPlayerVideoDisplay::~XELAVPlayerVideoDisplay() { reset(); }

void XELAVPlayerVideoDisplay::loadURL_withSubtitles(const std::string& url,
                                                    const std::vector<xel::JSONValue>& subtitles) {
  subtitles_ = subtitles;
  setAndObservePlayerItem(player_->makeItem(player_->makeAsset(url)));
  setPlayRequested(true);
}

void XELAVPlayerVideoDisplay::setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) {
  delegate_ = std::move(delegate);
}

void XELAVPlayerVideoDisplay::startTracking() {
  if (streamPlaybackTimeObserver()) return;
  streamPlaybackTimeObserver_ =
      player_->addPeriodicTimeObserver(progressInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->reportPlaybackStatus();
      });
}

void XELAVPlayerVideoDisplay::stopTracking() {
  if (!streamPlaybackTimeObserver()) return;
  player_->removeTimeObserver(*streamPlaybackTimeObserver_);
  streamPlaybackTimeObserver_.reset();
}

void XELAVPlayerVideoDisplay::reset() {
  stopTracking();
  setAndObservePlayerItem(nullptr);
  player_->removeItemEndObserver(*this);
}

/// This display as one of its private bases; expired while it is being destroyed.
template <typename Observer>
std::weak_ptr<Observer> XELAVPlayerVideoDisplay::weakSelf() {
  return std::shared_ptr<Observer>(weak_from_this().lock(), this);
}

void XELAVPlayerVideoDisplay::setAndObservePlayerItem(std::shared_ptr<xel::MediaItem> item) {
  if (item == playerItem_) return;
  if (playerItem_ && playerItem_->removeObserver(*this, xel::kMediaItemTimedMetadata)) {
    playerItem_->removeObserver(*this, xel::kMediaItemStatus);
  }
  playerItem_ = std::move(item);
  if (playerItem_) {
    const auto self = weakSelf<xel::MediaItemObserver>();
    playerItem_->addObserver(self, xel::kMediaItemTimedMetadata);
    playerItem_->addObserver(self, xel::kMediaItemStatus);
  }
  player_->addItemEndObserver(weakSelf<xel::MediaItemEndObserver>());
  loadPlayerItem(playerItem_);
}

void XELAVPlayerVideoDisplay::loadPlayerItem(const std::shared_ptr<xel::MediaItem>& item) {
  if (!item) return;
  const auto asset = item->asset();
  const auto keys = item->automaticallyLoadedAssetKeys();
  const auto load = std::make_shared<PendingLoad>(PendingLoad{item, asset, keys});
  const auto loop = xel::Platform::current().mainRunLoop;
  asset->loadValuesAsynchronously(keys, [weak = weak_from_this(), load, loop] {
    // Any thread may have come here: the item goes on to the main one, and is released there.
    PendingLoad loaded = std::move(*load);
    auto failure = failureOf(loaded);
    loop->post([weak, loaded = std::move(loaded), failure = std::move(failure)] {
      const auto self = weak.lock();
      if (!self) return;
      if (!failure) return self->player_->replaceCurrentItem(loaded.item);
      self->stopTracking();
      xel::Platform::current().log->line(xel::fillTemplate(
          "Error: Was not able to load AVPlayerItem key: %@", {debugDescription(failure->error)}));
    });
  });
}

void XELAVPlayerVideoDisplay::reportPlaybackStatus() {
  const double time = player_->currentTime();
  if (auto d = delegate()) d->videoDisplay_didProgressToTime(*this, time);
}

void XELAVPlayerVideoDisplay::observeValueForKeyPath_ofObject_change_context(
    std::string_view keyPath, xel::MediaItem&, const xel::MediaItemChange& change, const void*) {
  if (keyPath == xel::kMediaItemTimedMetadata) {
    if (change.oldTimedMetadata != change.newTimedMetadata) playerItemTimedMetadataDidChange();
  } else if (keyPath == xel::kMediaItemStatus) {
    playerItemStatusDidChange();
  }
}

void XELAVPlayerVideoDisplay::playerItemTimedMetadataDidChange() {
  xel::TimedMetadata texts;
  if (const auto metadata = playerItem_->timedMetadata()) {
    for (const auto& [key, value] : *metadata) {
      if (value) {
        texts[key] = *value;
      } else {
        texts.erase(key);
      }
    }
  }
  if (auto d = delegate()) d->videoDisplay_didReceiveTimedMetadata(*this, texts);
}

void XELAVPlayerVideoDisplay::playerItemStatusDidChange() {
  const auto status = playerItem_->status();
  if (status == xel::MediaItemStatus::readyToPlay && isPlayRequested()) {
    setPlayRequested(false);
    if (auto d = delegate()) d->videoDisplayIsReadyForPlayback(*this);
    startTracking();
    player_->play();
  } else if (status == xel::MediaItemStatus::failed) {
    const auto error = playerItem_->error();
    if (auto d = delegate()) d->videoDisplay_didFailWithError(*this, error);
  }
}

void XELAVPlayerVideoDisplay::playerItemDidFinishPlaying(
    const std::shared_ptr<xel::MediaItem>& item) {
  if (item == playerItem_) reset();
}
