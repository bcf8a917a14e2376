#include "xel/simulation/ScriptedMediaPlayer.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>

#include "simulation/Nanoseconds.h"
#include "simulation/ScriptedMediaAsset.h"

namespace xel::simulation {
namespace {

std::string shortest(double number) {
  char digits[32];
  return {digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr};
}

}  // namespace

ScriptedMediaPlayer::ScriptedMediaPlayer() : calls_(std::make_shared<std::vector<std::string>>()) {}

ScriptedMediaPlayer::~ScriptedMediaPlayer() {
  for (const auto& item : items_) {
    std::static_pointer_cast<ScriptedMediaAsset>(item->asset())->stopLoading();
  }
}

void ScriptedMediaPlayer::advance(double seconds) {
  const auto self = weak_from_this().lock();
  const auto item = currentItem_;
  if (!item || !isPlaying_) return;
  Nanoseconds left = nanoseconds(seconds);
  while (left > 0 && currentItem_ == item) {
    Nanoseconds step = left;
    for (const auto& [token, observer] : timeObservers_) {
      step = std::min(step, observer.due - playhead_);
    }
    playhead_ += step;
    left -= step;
    runObserversDue();
  }
}

void ScriptedMediaPlayer::seek(double seconds) {
  if (!currentItem_) return;
  const auto self = weak_from_this().lock();
  playhead_ = nanoseconds(seconds);
  for (auto& [token, observer] : timeObservers_) observer.due = playhead_;
  runObserversDue();
}

void ScriptedMediaPlayer::endItem(const std::shared_ptr<MediaItem>& item) {
  const auto self = weak_from_this().lock();
  // A copy: the reference may be to what an observer lets go of.
  reportItemEnd(std::shared_ptr<MediaItem>(item));
}

std::shared_ptr<MediaAsset> ScriptedMediaPlayer::makeAsset(const std::string& url) {
  calls_->push_back("makeAsset " + url);
  return std::make_shared<ScriptedMediaAsset>(url, assetKeys_, calls_);
}

std::shared_ptr<MediaItem> ScriptedMediaPlayer::makeItem(const std::shared_ptr<MediaAsset>& asset) {
  items_.push_back(
      std::make_shared<ScriptedMediaItem>(std::static_pointer_cast<ScriptedMediaAsset>(asset)));
  calls_->push_back("makeItem " + items_.back()->url());
  return items_.back();
}

void ScriptedMediaPlayer::replaceCurrentItem(const std::shared_ptr<MediaItem>& item) {
  currentItem_ = std::static_pointer_cast<ScriptedMediaItem>(item);
  calls_->push_back("replaceCurrentItem " + (currentItem_ ? currentItem_->url() : "none"));
  playhead_ = 0;
  for (auto& [token, observer] : timeObservers_) observer.due = observer.interval;
}

void ScriptedMediaPlayer::play() {
  calls_->emplace_back("play");
  isPlaying_ = true;
}

double ScriptedMediaPlayer::currentTime() const {
  return currentItem_ ? static_cast<double>(playhead_) / 1e9
                      : std::numeric_limits<double>::quiet_NaN();
}

MediaPlayer::TimeObserverToken ScriptedMediaPlayer::addPeriodicTimeObserver(
    double interval, std::function<void()> function) {
  constexpr Nanoseconds shortestInterval = 1'000'000;
  calls_->push_back("addPeriodicTimeObserver " + shortest(interval));
  const Nanoseconds span = std::max(nanoseconds(interval), shortestInterval);
  timeObservers_[++lastToken_] = {
      span, playhead_ + span, std::make_shared<const std::function<void()>>(std::move(function))};
  return lastToken_;
}

void ScriptedMediaPlayer::removeTimeObserver(TimeObserverToken token) {
  calls_->emplace_back("removeTimeObserver");
  // Released only after it has left the map: the function may own what removes.
  const auto released = timeObservers_.extract(token);
}

void ScriptedMediaPlayer::runObserversDue() {
  std::vector<TimeObserverToken> due;
  for (const auto& [token, observer] : timeObservers_) {
    if (observer.due <= playhead_) due.push_back(token);
  }
  for (const TimeObserverToken token : due) {
    const auto found = timeObservers_.find(token);
    if (found == timeObservers_.end() || found->second.due > playhead_) continue;
    found->second.due = playhead_ + found->second.interval;
    const auto function = found->second.function;
    (*function)();
  }
}

}  // namespace xel::simulation
