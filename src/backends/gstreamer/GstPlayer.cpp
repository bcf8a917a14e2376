#include "backends/gstreamer/GstPlayer.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace xel {
namespace {

/// Seconds. Metadata is delivered this late at most.
constexpr double followingInterval = 0.02;

double steadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool isDue(double interval, const std::optional<double>& earlier, double time) {
  if (!earlier || time < *earlier - interval) return true;
  if (!(interval > 0)) return time != *earlier;
  return std::floor(time / interval) > std::floor(*earlier / interval);
}

}  // namespace

GstPlayer::GstPlayer(std::shared_ptr<const GstItemSettings> settings)
    : settings_(std::move(settings)) {}

GstPlayer::~GstPlayer() {
  settings_->runLoop->cancel(timer_);
  if (item_) item_->stop();
}

std::shared_ptr<MediaAsset> GstPlayer::makeAsset(const std::string& url) {
  return std::make_shared<GstAsset>(url, settings_->runLoop);
}

std::shared_ptr<MediaItem> GstPlayer::makeItem(const std::shared_ptr<MediaAsset>& asset) {
  return std::make_shared<GstItem>(std::dynamic_pointer_cast<GstAsset>(asset), settings_);
}

void GstPlayer::replaceCurrentItem(const std::shared_ptr<MediaItem>& item) {
  if (item == item_) return;
  if (item_) item_->stop();
  item_ = std::dynamic_pointer_cast<GstItem>(item);
  runAllAtNextChance();
  if (!item_) return;
  jumps_ = item_->jumps();
  item_->start(isToPlay_, [player = weak_from_this()] {
    if (const auto self = player.lock()) self->handleItemEnd();
  });
  followWhileActive();
}

void GstPlayer::setToPlay(bool isToPlay) {
  isToPlay_ = isToPlay;
  if (!item_) return;
  item_->setToPlay(isToPlay);
  followWhileActive();
}

void GstPlayer::seek(double seconds) {
  if (!item_) return;
  item_->seek(seconds);
  followWhileActive();
}

double GstPlayer::currentTime() const {
  return item_ ? item_->position() : std::numeric_limits<double>::quiet_NaN();
}

std::optional<double> GstPlayer::duration() const {
  return item_ ? item_->duration() : std::nullopt;
}

MediaPlayer::TimeObserverToken GstPlayer::addPeriodicTimeObserver(double interval,
                                                                  std::function<void()> function) {
  timeObservers_.emplace(
      ++lastToken_,
      TimeObserver{interval, std::make_shared<const std::function<void()>>(std::move(function))});
  return lastToken_;
}

void GstPlayer::followWhileActive() {
  const bool isActive = item_ && (item_->isActive() || jumps_ != item_->jumps());
  if (isActive && timer_ == 0) {
    timer_ = settings_->runLoop->every(followingInterval, [player = weak_from_this()] {
      if (const auto self = player.lock()) self->follow();
    });
  } else if (!isActive) {
    settings_->runLoop->cancel(std::exchange(timer_, 0));
  }
}

void GstPlayer::follow() {
  if (const auto item = item_) {
    item->follow(steadySeconds());
    if (item == item_) runTimeObservers();
  }
  followWhileActive();
}

void GstPlayer::runTimeObservers() {
  if (item_->status() != MediaItemStatus::readyToPlay || item_->isSeeking()) return;
  if (jumps_ != item_->jumps()) {
    jumps_ = item_->jumps();
    runAllAtNextChance();
  }
  const double time = item_->position();
  std::vector<TimeObserverToken> due;
  for (const auto& [token, observer] : timeObservers_) {
    if (isDue(observer.interval, observer.time, time)) due.push_back(token);
  }
  const auto item = item_;
  for (const TimeObserverToken token : due) {
    if (item != item_) return;
    const auto found = timeObservers_.find(token);
    if (found == timeObservers_.end()) continue;
    found->second.time = time;
    const auto function = found->second.function;
    (*function)();
  }
}

void GstPlayer::runAllAtNextChance() {
  for (auto& [token, observer] : timeObservers_) observer.time.reset();
}

void GstPlayer::handleItemEnd() {
  const auto ended = item_;
  followWhileActive();
  reportItemEnd(ended);
}

}  // namespace xel
