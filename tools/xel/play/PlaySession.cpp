#include "play/PlaySession.h"

#include <cmath>
#include <utility>

#include "xel/platform/Platform.h"

namespace xel {

PlaySession::PlaySession(std::shared_ptr<PlayView> view, std::vector<double> conversions,
                         std::function<void()> whenOver)
    : view_(std::move(view)),
      conversions_(std::move(conversions)),
      whenOver_(std::move(whenOver)) {}

void PlaySession::start(std::shared_ptr<StreamPlayer> player, PlaybackSettings settings,
                        std::shared_ptr<ObservingHTTPClient> http,
                        std::shared_ptr<XELStreamRequest> request,
                        std::shared_ptr<simulation::TraceRecorder> recorder) {
  playback_ = Playback::make(std::move(player), std::move(settings),
                             std::shared_ptr<PlaybackObserver>(shared_from_this(), this));
  http_ = std::move(http);
  recorder_ = std::move(recorder);
  const auto display = playback_->display();
  const std::weak_ptr<XELStreamManagerDelegate> delegate = weak_from_this();
  manager_ =
      XELStreamManager::initWithVideoDisplay(recorder_ ? recorder_->record(display) : display);
  manager_->setDelegate(recorder_ ? recorder_->record(delegate) : delegate);
  if (recorder_) recorder_->begin(request);
  manager_->requestStream(std::move(request));
}

void PlaySession::togglePause() {
  playback_->togglePause();
  if (recorder_ && manager_) {
    if (playback_->progress().isPaused) {
      recorder_->notePause();
    } else {
      recorder_->noteResume();
    }
  }
  showProgress();
  view_->redraw();
}

void PlaySession::seekBy(double seconds) {
  playback_->seekBy(seconds);
  showProgress();
  view_->redraw();
}

void PlaySession::abandon(int exitStatus) {
  if (!whenOver_) return;
  exitStatus_ = exitStatus;
  letGoOfManager();
  finish();
}

void PlaySession::endAfterPings(int exitStatus) {
  if (!exitStatus_) exitStatus_ = exitStatus;
  letGoOfManager();
  endIfPingsAreAnswered();
}

void PlaySession::endIfPingsAreAnswered() {
  if (!exitStatus_ || http_->outstandingPings() > 0) return;
  if (whenOver_) finish();
}

void PlaySession::letGoOfManager() {
  if (recorder_ && manager_) recorder_->noteRelease();
  manager_ = nullptr;
}

void PlaySession::finish() {
  if (recorder_) recorder_->noteEnd(exitStatus());
  std::exchange(whenOver_, nullptr)();
}

void PlaySession::show(const PlayEvent& event) {
  view_->show(playback_->progress().position, event);
}

void PlaySession::showProgress() {
  auto progress = playback_->progress();
  if (manager_ && hasCuepoints_) {
    progress.contentTime = manager_->contentTimeForStreamTime(progress.position);
  }
  view_->showProgress(progress);
}

void PlaySession::streamManager_didInitializeStream(XELStreamManager&,
                                                    const std::string& streamID) {
  isInitialized_ = true;
  show(StreamInitialized{streamID});
}

void PlaySession::streamManager_didReceiveError(XELStreamManager&,
                                                const std::shared_ptr<const Error>& error) {
  show(ErrorReceived{error});
  endAfterPings(1);
}

void PlaySession::streamManagerIsReadyForPlayback(XELStreamManager& manager) {
  show(ReadyForPlayback{});
  convertTimes(manager);
}

void PlaySession::convertTimes(const XELStreamManager& manager) {
  for (const auto time : std::exchange(conversions_, {})) {
    show(TimeConverted{time, manager.contentTimeForStreamTime(time),
                       manager.streamTimeForContentTime(time),
                       manager.previousCuepointForStreamTime(time)});
  }
}

void PlaySession::streamManager_adBreakDidStart(XELStreamManager&,
                                                const std::shared_ptr<XELAdBreakInfo>& info) {
  show(BreakEvent{"adBreakDidStart", info});
}

void PlaySession::streamManager_adDidStart(XELStreamManager&, const std::shared_ptr<XELAd>& ad) {
  show(AdEvent{"adDidStart", ad});
}

void PlaySession::streamManager_adDidCrossFirstQuartile(XELStreamManager&,
                                                        const std::shared_ptr<XELAd>& ad) {
  show(AdEvent{"adDidCrossFirstQuartile", ad});
}

void PlaySession::streamManager_adDidCrossMidpoint(XELStreamManager&,
                                                   const std::shared_ptr<XELAd>& ad) {
  show(AdEvent{"adDidCrossMidpoint", ad});
}

void PlaySession::streamManager_adDidCrossThirdQuartile(XELStreamManager&,
                                                        const std::shared_ptr<XELAd>& ad) {
  show(AdEvent{"adDidCrossThirdQuartile", ad});
}

void PlaySession::streamManager_adDidComplete(XELStreamManager&, const std::shared_ptr<XELAd>& ad) {
  show(AdEvent{"adDidComplete", ad});
}

void PlaySession::streamManager_adBreakDidEnd(XELStreamManager&,
                                              const std::shared_ptr<XELAdBreakInfo>& info) {
  show(BreakEvent{"adBreakDidEnd", info});
}

void PlaySession::streamManager_ad_didCountdownTo(XELStreamManager&,
                                                  const std::shared_ptr<XELAd>& ad,
                                                  double remaining) {
  show(AdCountdown{ad, remaining});
}

void PlaySession::streamManager_didUpdateCuepoints(
    XELStreamManager&, const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) {
  hasCuepoints_ = true;
  show(CuepointsUpdated{cuepoints});
}

void PlaySession::playbackWillLoad(const std::string& url,
                                   const std::vector<JSONValue>& subtitles) {
  hasLoaded_ = true;
  view_->show(0, StreamLoaded{url, subtitles});
}

void PlaySession::playbackWillSeek(double to) {
  if (recorder_) recorder_->noteSeek(to);
  show(SeekStarted{to});
}

void PlaySession::playbackDidTick() { showProgress(); }

void PlaySession::playbackDidMiss(std::uint64_t segments) {
  if (recorder_) recorder_->noteMissed(segments);
  Platform::current().log->line("The player missed " + std::to_string(segments) +
                                " segments that went out of the playlist");
}

void PlaySession::playbackDidEnd() { endAfterPings(0); }

void PlaySession::pingWillBeSent(const std::string& event, const std::string& url) {
  show(PingSent{event, url});
}

void PlaySession::pingWasAnswered(const std::string& event, const std::string& url,
                                  const HTTPResult& result, double milliseconds) {
  const auto toTheMicrosecond = std::round(milliseconds * 1000) / 1000;
  show(PingAnswered{event, url, result.error, result.response.status, toTheMicrosecond});
  endIfPingsAreAnswered();
}

/// Everything that the library still does begins with a request's answer, until it loads a stream.
void PlaySession::requestWasAnswered() {
  if (!isInitialized_ || hasLoaded_ || exitStatus_ || http_->outstandingRequests() > 0) return;
  Platform::current().log->line(
      "The ad server's answer names no stream to play: its stream_manifest is not a text");
  endAfterPings(1);
}

}  // namespace xel
