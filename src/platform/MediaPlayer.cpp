#include "xel/platform/MediaPlayer.h"

#include <algorithm>
#include <utility>

namespace xel {

MediaAsset::~MediaAsset() = default;
MediaItemObserver::~MediaItemObserver() = default;
MediaItem::~MediaItem() = default;
MediaItemEndObserver::~MediaItemEndObserver() = default;
MediaPlayer::~MediaPlayer() = default;

void MediaItem::addObserver(std::weak_ptr<MediaItemObserver> observer, std::string_view keyPath,
                            const void* context) {
  std::erase_if(registrations_, [](const auto& each) { return each.observer.expired(); });
  if (observer.expired()) return;
  registrations_.push_back({++lastNumber_, std::move(observer), std::string(keyPath), context});
}

bool MediaItem::removeObserver(const MediaItemObserver& observer, std::string_view keyPath) {
  const auto last = std::find_if(registrations_.rbegin(), registrations_.rend(), [&](auto& each) {
    return each.keyPath == keyPath && each.observer.lock().get() == &observer;
  });
  if (last == registrations_.rend()) return false;
  registrations_.erase(std::next(last).base());
  return true;
}

void MediaItem::reportChange(std::string_view keyPath, const MediaItemChange& change) {
  const auto registeredNow = registrations_;
  for (const auto& each : registeredNow) {
    if (each.keyPath != keyPath) continue;
    const bool isStillRegistered =
        std::any_of(registrations_.begin(), registrations_.end(),
                    [&](const auto& other) { return other.number == each.number; });
    if (!isStillRegistered) continue;
    if (const auto observer = each.observer.lock()) {
      observer->observeValueForKeyPath_ofObject_change_context(keyPath, *this, change,
                                                               each.context);
    }
  }
}

void MediaPlayer::addItemEndObserver(std::weak_ptr<MediaItemEndObserver> observer) {
  std::erase_if(endObservers_, [](const auto& each) { return each.expired(); });
  if (!observer.expired()) endObservers_.push_back(std::move(observer));
}

void MediaPlayer::removeItemEndObserver(const MediaItemEndObserver& observer) {
  std::erase_if(endObservers_, [&](const auto& each) {
    const auto registered = each.lock();
    return !registered || registered.get() == &observer;
  });
}

void MediaPlayer::reportItemEnd(const std::shared_ptr<MediaItem>& item) {
  const auto registeredNow = endObservers_;
  for (const auto& each : registeredNow) {
    const auto observer = each.lock();
    if (!observer) continue;
    const bool isStillRegistered =
        std::any_of(endObservers_.begin(), endObservers_.end(),
                    [&](const auto& other) { return other.lock() == observer; });
    if (isStillRegistered) observer->playerItemDidFinishPlaying(item);
  }
}

}  // namespace xel
