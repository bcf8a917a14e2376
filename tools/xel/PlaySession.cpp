#include "PlaySession.h"

#include <cmath>
#include <utility>

#include "xel/platform/Platform.h"

namespace xel {

PlaySession::PlaySession(std::shared_ptr<PlayView> view, std::vector<double> conversions,
                         std::function<void()> whenOver)
    : view_(std::move(view)),
      conversions_(std::move(conversions)),
      whenOver_(std::move(whenOver)) {}

void PlaySession::start(std::shared_ptr<ClockDisplay> display,
                        std::shared_ptr<ObservingHTTPClient> http,
                        std::shared_ptr<XELStreamRequest> request) {
  display_ = std::move(display);
  http_ = std::move(http);
  display_->setObserver(weak_from_this());
  manager_ = XELStreamManager::initWithVideoDisplay(display_);
  manager_->setDelegate(weak_from_this());
  manager_->requestStream(std::move(request));
}

void PlaySession::abandon(int exitStatus) {
  if (!whenOver_) return;
  exitStatus_ = exitStatus;
  manager_ = nullptr;
  std::exchange(whenOver_, nullptr)();
}

void PlaySession::endAfterPings(int exitStatus) {
  if (!exitStatus_) exitStatus_ = exitStatus;
  manager_ = nullptr;
  endIfPingsAreAnswered();
}

void PlaySession::endIfPingsAreAnswered() {
  if (!exitStatus_ || http_->outstandingPings() > 0) return;
  if (whenOver_) std::exchange(whenOver_, nullptr)();
}

void PlaySession::show(const PlayEvent& event) { view_->show(display_->position(), event); }

void PlaySession::streamManager_didInitializeStream(XELStreamManager&,
                                                    const std::string& streamID) {
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
  show(CuepointsUpdated{cuepoints});
}

void PlaySession::clockWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) {
  show(StreamLoaded{url, subtitles});
}

void PlaySession::clockDidTick() {
  view_->showProgress({display_->position(), display_->knownEnd(), display_->isEndFinal()});
}

void PlaySession::clockDidMiss(std::uint64_t segments) {
  Platform::current().log->line("The player missed " + std::to_string(segments) +
                                " segments that went out of the playlist");
}

void PlaySession::clockDidEnd() { endAfterPings(0); }

void PlaySession::pingWillBeSent(const std::string& event, const std::string& url) {
  show(PingSent{event, url});
}

void PlaySession::pingWasAnswered(const std::string& event, const std::string& url,
                                  const HTTPResult& result, double milliseconds) {
  const auto toTheMicrosecond = std::round(milliseconds * 1000) / 1000;
  show(PingAnswered{event, url, result.error, result.response.status, toTheMicrosecond});
  endIfPingsAreAnswered();
}

}  // namespace xel
