#include "play/ClockDisplay.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <variant>

#include "play/PlaylistURL.h"

namespace xel {
namespace {

constexpr double ticksPerSecond = 5;
constexpr double shortestInterval = 0.001;
constexpr double shortestRetry = 0.05;
/// Far below a tick, far above what sums of seconds lose.
constexpr double tolerance = 1e-6;
constexpr double infinity = std::numeric_limits<double>::infinity();

/// The first multiple of a tick after `time`.
double tickAfter(double time) {
  auto tick = std::floor(time * ticksPerSecond);
  while (tick / ticksPerSecond <= time) ++tick;
  return tick / ticksPerSecond;
}

std::shared_ptr<const Error> makeError(ClockPlayerError code, const std::string& url,
                                       const std::string& cause) {
  return std::make_shared<const Error>(Error{std::string(clockPlayerErrorDomain),
                                             static_cast<std::int64_t>(code),
                                             "Unable to play " + url + ": " + cause, nullptr});
}

}  // namespace

ClockDisplay::ClockDisplay(std::shared_ptr<HTTPClient> http, std::shared_ptr<RunLoop> runLoop,
                           std::function<double()> now, std::optional<double> speed)
    : http_(std::move(http)), runLoop_(std::move(runLoop)), now_(std::move(now)), speed_(speed) {}

ClockDisplay::~ClockDisplay() { stop(); }

PlayProgress ClockDisplay::progress() const {
  return {position_, timeline_.end(), timeline_.isFinished(), isPaused_};
}

void ClockDisplay::loadURL_withSubtitles(const std::string& url, const std::vector<JSONValue>&) {
  playlistURL_ = url;
  isVariant_ = false;
  isReady_ = false;
  isPaused_ = false;
  timeline_ = {};
  position_ = clock_ = textsFrom_ = 0;
  isEndReported_ = false;
  fetchPlaylist();
}

void ClockDisplay::play() {
  if (std::exchange(isPaused_, false)) goOn();
}

void ClockDisplay::pause() {
  isPaused_ = true;
  stop();
}

void ClockDisplay::seek(double to) {
  refreshDue_ += to - position_;
  position_ = clock_ = textsFrom_ = to;
  isEndReported_ = false;
  goOn();
}

void ClockDisplay::fetchPlaylist() {
  stop();
  HTTPRequest request;
  request.url = playlistURL_;
  request.cachePolicy = HTTPRequest::CachePolicy::reloadIgnoringLocalCache;
  http_->send(std::move(request),
              [weak = weak_from_this(), order = order_](const HTTPResult& result) {
                const auto self = weak.lock();
                if (self && self->order_ == order) self->handlePlaylistResult(result);
              });
}

void ClockDisplay::handlePlaylistResult(const HTTPResult& result) {
  if (result.error) return fail(result.error);
  if (result.response.status >= 400) {
    return fail(makeError(ClockPlayerError::refused, playlistURL_,
                          "HTTP status " + std::to_string(result.response.status)));
  }
  const auto playlist = parsePlaylist(result.response.body);
  if (const auto* media = std::get_if<MediaPlaylist>(&playlist)) return takePlaylist(*media);

  std::string reason = "its first variant stream is no media playlist";
  if (const auto* fault = std::get_if<PlaylistFault>(&playlist)) {
    reason = fault->reason;
  } else if (!isVariant_) {
    const auto& variant = std::get<MasterPlaylist>(playlist).firstVariant;
    if (auto url = resolveURL(playlistURL_, variant)) {
      playlistURL_ = std::move(*url);
      isVariant_ = true;
      return fetchPlaylist();
    }
    reason = "its first variant stream has no valid URL";
  }
  fail(makeError(ClockPlayerError::notAPlaylist, playlistURL_, "not a media playlist, " + reason));
}

void ClockDisplay::takePlaylist(const MediaPlaylist& playlist) {
  const auto order = order_;
  const auto missed = timeline_.append(playlist);
  refreshDue_ = clock_ + timeline_.targetDuration();
  if (missed > 0) {
    if (const auto observer = observer_.lock()) observer->playerDidMiss(missed);
  }
  if (!std::exchange(isReady_, true)) {
    if (const auto target = delegate()) target->videoDisplayIsReadyForPlayback(*this);
    if (order != order_) return;
  }
  if (timeline_.isFinished() || clock_ < timeline_.end()) return run();
  const auto retry = speed_ ? timeline_.targetDuration() / 2 / *speed_ : shortestRetry;
  everyInterval(std::max(retry, shortestRetry), &ClockDisplay::fetchPlaylist);
}

void ClockDisplay::fail(const std::shared_ptr<const Error>& error) {
  stop();
  if (const auto target = delegate()) target->videoDisplay_didFailWithError(*this, error);
}

void ClockDisplay::end() {
  stop();
  if (const auto observer = observer_.lock()) observer->playerDidEnd();
}

/// Absent when the end of the stream has been reported.
std::optional<double> ClockDisplay::nextTick() const {
  if (!timeline_.isFinished() || clock_ <= timeline_.end()) return clock_;
  if (isEndReported_) return std::nullopt;
  return timeline_.end();
}

bool ClockDisplay::isDue(double tick) const {
  if (!speed_) return true;
  return anchorPosition_ + (now_() - anchorTime_) * *speed_ >= tick - tolerance;
}

void ClockDisplay::everyInterval(double seconds, void (ClockDisplay::*action)()) {
  timer_ = runLoop_->every(seconds, [weak = weak_from_this(), action] {
    if (const auto self = weak.lock()) (self.get()->*action)();
  });
}

void ClockDisplay::stop() {
  ++order_;
  if (timer_ != 0) runLoop_->cancel(std::exchange(timer_, 0));
}

/// Later, since a report may be under way.
void ClockDisplay::goOn() {
  stop();
  if (isPaused_) return;
  runLoop_->post([weak = weak_from_this(), order = order_] {
    const auto self = weak.lock();
    if (!self || self->order_ != order) return;
    if (self->isReady_) {
      self->run();
    } else {
      self->fetchPlaylist();
    }
  });
}

void ClockDisplay::run() {
  stop();
  anchorTime_ = now_();
  anchorPosition_ = nextTick().value_or(clock_);
  if (speed_) {
    everyInterval(std::max(1 / ticksPerSecond / *speed_, shortestInterval), &ClockDisplay::advance);
  }
  advance();
}

void ClockDisplay::advance() {
  const auto order = order_;
  do {
    const auto tick = nextTick();
    if (!tick) return end();
    if (!isDue(*tick)) return;
    pass(*tick);
    if (order != order_) return;
  } while (speed_);
  // Between two ticks at full speed the answers that have arrived are handled.
  runLoop_->post([weak = weak_from_this(), order] {
    const auto self = weak.lock();
    if (self && self->order_ == order) self->advance();
  });
}

/// Reports the tick with the texts before it, unless the playlist must be fetched first.
void ClockDisplay::pass(double tick) {
  if (!timeline_.isFinished() && (tick >= refreshDue_ || tick >= timeline_.end())) {
    return fetchPlaylist();
  }
  if (!reportTextsThrough(tick)) return;
  position_ = tick;
  clock_ = tickAfter(tick);
  textsFrom_ = std::nextafter(tick, infinity);
  isEndReported_ = timeline_.isFinished() && tick >= timeline_.end();
  if (const auto target = delegate()) target->videoDisplay_didProgressToTime(*this, tick);
}

/// False when the clock was told something else meanwhile.
bool ClockDisplay::reportTextsThrough(double tick) {
  const auto order = order_;
  const auto& texts = timeline_.texts();
  for (auto text = texts.lower_bound(textsFrom_); text != texts.end() && text->first <= tick;
       ++text) {
    position_ = text->first;
    const TimedMetadata metadata = {{"TXXX", text->second}};
    if (const auto target = delegate()) {
      target->videoDisplay_didReceiveTimedMetadata(*this, metadata);
    }
    if (order != order_) return false;
  }
  return true;
}

}  // namespace xel
