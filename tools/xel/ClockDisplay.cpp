#include "ClockDisplay.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <variant>

#include "PlaylistURL.h"

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
                           std::function<double()> now, Settings settings)
    : http_(std::move(http)),
      runLoop_(std::move(runLoop)),
      now_(std::move(now)),
      settings_(std::move(settings)) {}

ClockDisplay::~ClockDisplay() { standStill(); }

void ClockDisplay::loadURL_withSubtitles(const std::string& url,
                                         const std::vector<JSONValue>& subtitles) {
  standStill();
  ++load_;
  playlistURL_ = url;
  isVariant_ = false;
  isReady_ = false;
  timeline_ = {};
  playedBefore_ = played(position_);
  runStart_ = 0;
  position_ = 0;
  clock_ = 0;
  isAtSeekTarget_ = false;
  isEndReported_ = false;
  textsFrom_ = 0;
  const auto load = load_;
  if (const auto observer = observer_.lock()) observer->clockWillLoad(url, subtitles);
  if (load == load_) fetchPlaylist();
}

void ClockDisplay::fetchPlaylist() {
  standStill();
  HTTPRequest request;
  request.url = playlistURL_;
  request.cachePolicy = HTTPRequest::CachePolicy::reloadIgnoringLocalCache;
  http_->send(std::move(request),
              [weak = weak_from_this(), load = load_](const HTTPResult& result) {
                const auto self = weak.lock();
                if (self && self->load_ == load) self->handlePlaylistResult(result);
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
  const auto load = load_;
  const auto missed = timeline_.append(playlist);
  refreshDue_ = clock_ + timeline_.targetDuration();
  if (missed > 0) {
    if (const auto observer = observer_.lock()) observer->clockDidMiss(missed);
  }
  if (!std::exchange(isReady_, true)) {
    if (const auto target = delegate()) target->videoDisplayIsReadyForPlayback(*this);
    if (load != load_) return;
  }
  if (timeline_.isFinished() || clock_ < timeline_.end()) return run();
  const auto retry =
      settings_.speed ? timeline_.targetDuration() / 2 / *settings_.speed : shortestRetry;
  everyInterval(std::max(retry, shortestRetry), &ClockDisplay::fetchPlaylist);
}

void ClockDisplay::fail(const std::shared_ptr<const Error>& error) {
  ++load_;
  if (const auto target = delegate()) target->videoDisplay_didFailWithError(*this, error);
}

void ClockDisplay::end() {
  standStill();
  ++load_;
  if (const auto observer = observer_.lock()) observer->clockDidEnd();
}

/// Absent when the end of the stream has been reported.
std::optional<double> ClockDisplay::nextTick() const {
  if (!timeline_.isFinished() || clock_ <= timeline_.end()) return clock_;
  if (isEndReported_) return std::nullopt;
  return timeline_.end();
}

bool ClockDisplay::isDue(double tick) const {
  if (!settings_.speed) return true;
  return anchorPosition_ + (now_() - anchorTime_) * *settings_.speed >= tick - tolerance;
}

void ClockDisplay::everyInterval(double seconds, void (ClockDisplay::*action)()) {
  timer_ = runLoop_->every(seconds, [weak = weak_from_this(), action] {
    if (const auto self = weak.lock()) (self.get()->*action)();
  });
}

void ClockDisplay::standStill() {
  isRunning_ = false;
  if (timer_ != 0) runLoop_->cancel(std::exchange(timer_, 0));
}

void ClockDisplay::run() {
  standStill();
  isRunning_ = true;
  anchorTime_ = now_();
  anchorPosition_ = nextTick().value_or(clock_);
  if (settings_.speed) {
    everyInterval(std::max(1 / ticksPerSecond / *settings_.speed, shortestInterval),
                  &ClockDisplay::advance);
  }
  advance();
}

void ClockDisplay::advance() {
  const auto load = load_;
  do {
    const auto tick = nextTick();
    if (!tick) return end();
    if (!isDue(*tick)) return;
    pass(*tick);
    if (load != load_ || !isRunning_) return;
  } while (settings_.speed);
  // Between two ticks at full speed the answers that have arrived are handled.
  runLoop_->post([weak = weak_from_this(), load] {
    const auto self = weak.lock();
    if (self && self->load_ == load && self->isRunning_) self->advance();
  });
}

/// Reports the tick with the texts before it, or does what must come first.
void ClockDisplay::pass(double tick) {
  if (settings_.duration && played(tick) > *settings_.duration + tolerance) return end();
  if (!timeline_.isFinished() && (tick >= refreshDue_ || tick >= timeline_.end())) {
    return fetchPlaylist();
  }

  const auto isSeeking = nextSeek_ < settings_.seeks.size() && !isAtSeekTarget_ &&
                         tick >= settings_.seeks[nextSeek_].at;
  if (isSeeking) {
    const auto seek = settings_.seeks[nextSeek_];
    if (!reportTexts(textsFrom_, std::nextafter(seek.at, -infinity))) return;
    ++nextSeek_;
    return jump(tick, seek.to);
  }

  if (!reportTexts(textsFrom_, tick)) return;
  position_ = tick;
  clock_ = tickAfter(tick);
  textsFrom_ = std::nextafter(tick, infinity);
  isAtSeekTarget_ = false;
  isEndReported_ = timeline_.isFinished() && tick >= timeline_.end();
  const auto load = load_;
  if (const auto target = delegate()) target->videoDisplay_didProgressToTime(*this, tick);
  if (load != load_) return;
  if (const auto observer = observer_.lock()) observer->clockDidTick();
}

void ClockDisplay::jump(double from, double to) {
  if (timeline_.isFinished()) to = std::min(to, timeline_.end());
  playedBefore_ = played(from);
  runStart_ = to;
  position_ = to;
  clock_ = to;
  textsFrom_ = to;
  refreshDue_ += to - from;
  isAtSeekTarget_ = true;
  if (settings_.speed) anchorTime_ += (from - anchorPosition_) / *settings_.speed;
  anchorPosition_ = to;
}

/// Reports the texts from `from` through `through`; false when the stream was replaced meanwhile.
bool ClockDisplay::reportTexts(double from, double through) {
  const auto load = load_;
  const auto& texts = timeline_.texts();
  for (auto text = texts.lower_bound(from); text != texts.end() && text->first <= through; ++text) {
    position_ = text->first;
    const TimedMetadata metadata = {{"TXXX", text->second}};
    if (const auto target = delegate()) {
      target->videoDisplay_didReceiveTimedMetadata(*this, metadata);
    }
    if (load != load_) return false;
  }
  return true;
}

}  // namespace xel
