#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "xel/session/XELStreamManager.h"
#include "xel/session/XELStreamManagerDelegate.h"
#include "xel/session/XELStreamRequest.h"
#include "xel/simulation/TraceRecorder.h"

#include "play/ObservingHTTPClient.h"
#include "play/PlayView.h"
#include "play/Playback.h"

namespace xel {

/// The host application of one stream: shows what the library, the display and the pings tell, and
/// knows when all is over.
///
/// It is over when the stream or the duration to play is at its end, or the session failed, and
/// every ping that was sent has its result. Threads: main run loop.
class PlaySession final : public XELStreamManagerDelegate,
                          public RequestObserver,
                          private PlaybackObserver,
                          public std::enable_shared_from_this<PlaySession> {
 public:
  /// @param conversions times to convert once the stream is ready, in seconds.
  /// @param whenOver is called once, from within a report.
  PlaySession(std::shared_ptr<PlayView> view, std::vector<double> conversions,
              std::function<void()> whenOver);

  /// @param recorder null where the session is not recorded.
  void start(std::shared_ptr<StreamPlayer> player, PlaybackSettings settings,
             std::shared_ptr<ObservingHTTPClient> http, std::shared_ptr<XELStreamRequest> request,
             std::shared_ptr<simulation::TraceRecorder> recorder = nullptr);
  void togglePause();
  /// @param seconds from where the playhead is, forward or, where negative, back.
  void seekBy(double seconds);
  /// Ends the session now, without waiting for pings, unless it is over already.
  void abandon(int exitStatus);
  /// The same, for a viewer who has seen enough.
  void quit() { abandon(exitStatus_.value_or(0)); }
  /// 0 when the stream was played, 1 when the session failed, or what `abandon` was given.
  int exitStatus() const noexcept { return exitStatus_.value_or(1); }

  void streamManager_didInitializeStream(XELStreamManager& manager,
                                         const std::string& streamID) override;
  void streamManager_didReceiveError(XELStreamManager& manager,
                                     const std::shared_ptr<const Error>& error) override;
  void streamManagerIsReadyForPlayback(XELStreamManager& manager) override;
  void streamManager_adBreakDidStart(XELStreamManager& manager,
                                     const std::shared_ptr<XELAdBreakInfo>& info) override;
  void streamManager_adDidStart(XELStreamManager& manager,
                                const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidCrossFirstQuartile(XELStreamManager& manager,
                                             const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidCrossMidpoint(XELStreamManager& manager,
                                        const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidCrossThirdQuartile(XELStreamManager& manager,
                                             const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidComplete(XELStreamManager& manager,
                                   const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adBreakDidEnd(XELStreamManager& manager,
                                   const std::shared_ptr<XELAdBreakInfo>& info) override;
  void streamManager_ad_didCountdownTo(XELStreamManager& manager, const std::shared_ptr<XELAd>& ad,
                                       double remaining) override;
  void streamManager_didUpdateCuepoints(
      XELStreamManager& manager,
      const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) override;

  void pingWillBeSent(const std::string& event, const std::string& url) override;
  void pingWasAnswered(const std::string& event, const std::string& url, const HTTPResult& result,
                       double milliseconds) override;
  void requestWasAnswered() override;

 private:
  void playbackWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) override;
  void playbackWillSeek(double to) override;
  void playbackDidTick() override;
  void playbackDidMiss(std::uint64_t segments) override;
  void playbackDidEnd() override;

  void show(const PlayEvent& event);
  void showProgress();
  void convertTimes(const XELStreamManager& manager);
  void endAfterPings(int exitStatus);
  void endIfPingsAreAnswered();
  void letGoOfManager();
  void finish();

  const std::shared_ptr<PlayView> view_;
  std::vector<double> conversions_;
  std::function<void()> whenOver_;
  std::shared_ptr<Playback> playback_;
  std::shared_ptr<ObservingHTTPClient> http_;
  std::shared_ptr<simulation::TraceRecorder> recorder_;
  std::shared_ptr<XELStreamManager> manager_;
  bool isInitialized_ = false;
  bool hasLoaded_ = false;
  /// Without cue points content time is not known.
  bool hasCuepoints_ = false;
  std::optional<int> exitStatus_;
};

}  // namespace xel
