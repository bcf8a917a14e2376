#include "play/Playback.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace xel {
namespace {

using simulation::DisplayObserver;
using simulation::FailureReport;
using simulation::MetadataReport;
using simulation::ObservingDisplay;
using simulation::ProgressReport;

/// Far below a tick, far above what sums of seconds lose.
constexpr double tolerance = 1e-6;
/// Ticks that lie further apart than so many seconds have a jump between them.
constexpr double longestTick = 1;

}  // namespace

std::shared_ptr<Playback> Playback::make(std::shared_ptr<StreamPlayer> player,
                                         PlaybackSettings settings,
                                         std::weak_ptr<PlaybackObserver> observer) {
  auto made = std::make_shared<Playback>(Token(), std::move(player), std::move(settings),
                                         std::move(observer));
  made->display_ = ObservingDisplay::make(made->player_->display(),
                                          std::shared_ptr<DisplayObserver>(made, made.get()));
  made->player_->setObserver(std::shared_ptr<StreamPlayerObserver>(made, made.get()));
  return made;
}

Playback::Playback(Token, std::shared_ptr<StreamPlayer> player, PlaybackSettings settings,
                   std::weak_ptr<PlaybackObserver> observer)
    : player_(std::move(player)), settings_(std::move(settings)), observer_(std::move(observer)) {}

void Playback::togglePause() {
  if (isOver_) return;
  if (player_->progress().isPaused) {
    player_->play();
  } else {
    player_->pause();
  }
}

void Playback::seekBy(double seconds) {
  if (!isOver_) seek(player_->progress().position + seconds);
}

void Playback::seek(double to) {
  const auto progress = player_->progress();
  if (progress.isEndFinal) to = std::min(to, progress.knownEnd);
  to = std::max(to, 0.0);
  leave();
  isArriving_ = true;
  if (const auto observer = observer_.lock()) observer->playbackWillSeek(to);
  player_->seek(to);
}

bool Playback::isSeekDue(double time) const {
  return !isArriving_ && nextSeek_ < settings_.seeks.size() &&
         time >= settings_.seeks[nextSeek_].at;
}

/// How much will have been played when the playhead is there.
double Playback::playedAt(double time) const {
  const auto passed = time - lastTick_.value_or(time);
  return passed >= 0 && passed <= longestTick ? played_ + passed : played_;
}

/// Counts what has been played since the last tick: the next one does not go on from there.
void Playback::leave() {
  played_ = playedAt(player_->progress().position);
  lastTick_.reset();
}

void Playback::displayWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) {
  leave();
  isArriving_ = false;
  if (const auto observer = observer_.lock()) observer->playbackWillLoad(url, subtitles);
}

bool Playback::isBeyondDuration(double played) const {
  return settings_.duration && played > *settings_.duration + tolerance;
}

bool Playback::displayWillReport(const simulation::DisplayReport& report) {
  if (isOver_) return false;
  if (const auto* tick = std::get_if<ProgressReport>(&report)) return willTick(tick->time);
  if (!std::holds_alternative<MetadataReport>(report)) return true;
  const auto time = player_->progress().position;
  return !isSeekDue(time) && !isBeyondDuration(playedAt(time));
}

bool Playback::willTick(double time) {
  const auto played = playedAt(time);
  if (isBeyondDuration(played)) {
    end();
    return false;
  }
  played_ = played;
  lastTick_ = time;
  if (isSeekDue(time)) {
    seek(settings_.seeks[nextSeek_++].to);
    return false;
  }
  isArriving_ = false;
  return true;
}

void Playback::displayDidReport(const simulation::DisplayReport& report) {
  if (std::holds_alternative<FailureReport>(report)) isOver_ = true;
  if (isOver_ || !std::holds_alternative<ProgressReport>(report)) return;
  if (const auto observer = observer_.lock()) observer->playbackDidTick();
  if (settings_.duration && played_ >= *settings_.duration - tolerance) end();
}

void Playback::playerDidMiss(std::uint64_t segments) {
  if (const auto observer = observer_.lock()) observer->playbackDidMiss(segments);
}

void Playback::playerDidEnd() { end(); }

void Playback::end() {
  if (std::exchange(isOver_, true)) return;
  player_->pause();
  if (const auto observer = observer_.lock()) observer->playbackDidEnd();
}

}  // namespace xel
