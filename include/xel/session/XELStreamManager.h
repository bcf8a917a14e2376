#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xel/display/XELVideoDisplay.h"
#include "xel/model/XELCuepoint.h"
#include "xel/monitor/XELStreamMonitorDelegate.h"
#include "xel/platform/Error.h"
#include "xel/platform/HTTPClient.h"
#include "xel/platform/JSONValue.h"
#include "xel/session/XELStreamManagerDelegate.h"
#include "xel/session/XELStreamRequest.h"

namespace xel {

/// The stream could not be opened. The code is that of `underlying`, or 0 when there is none.
inline constexpr std::string_view errorDomain = "XELError";
/// The ad server refused the stream. The code is the HTTP status, 400 or more.
inline constexpr std::string_view httpErrorDomain = "XELHttpError";

}  // namespace xel

/// The entry to the library: opens ad-inserted streams in a video display and tells the host
/// application what happens in them.
///
/// Make one, set a delegate, request a stream. A failed request leaves the manager usable. A second
/// request is not guarded against: each answer that arrives starts a monitor of its own, and the
/// latest one is followed by `previousCuepointForStreamTime` and the conversions; a host that
/// wants to change streams makes a new manager.
///
/// Ownership: the host holds the manager; the manager holds the display, the last request and the
/// monitor. Letting go of the manager ends the session: a live stream is no longer polled, and an
/// answer that comes late no longer touches the display. A stream request in flight keeps the
/// manager alive until it is answered.
/// Threads: main run loop. Errors: nothing is thrown; failures reach
/// `streamManager_didReceiveError`.
class XEL_EXPORT XELStreamManager final : public std::enable_shared_from_this<XELStreamManager>,
                                          private XELStreamMonitorDelegate {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null. The display must be present by the time a stream is requested.
  static std::shared_ptr<XELStreamManager> initWithVideoDisplay(
      std::shared_ptr<XELVideoDisplay> videoDisplay);
  XELStreamManager(Token, std::shared_ptr<XELVideoDisplay> videoDisplay);
  ~XELStreamManager() override;
  XELStreamManager(const XELStreamManager&) = delete;
  XELStreamManager& operator=(const XELStreamManager&) = delete;

  /// Null when there is none, or when it is gone: the manager does not keep it alive.
  std::shared_ptr<XELStreamManagerDelegate> delegate() const noexcept { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELStreamManagerDelegate> delegate) noexcept {
    delegate_ = std::move(delegate);
  }
  const std::shared_ptr<XELVideoDisplay>& videoDisplay() const noexcept { return videoDisplay_; }

  /// Opens a session for the stream. Returns at once; the rest comes through the delegate.
  void requestStream(std::shared_ptr<XELStreamRequest> request);

  /// Content time (ads removed) to stream time (ads included), in seconds. A content time at which
  /// a break stands maps to the end of that break. Live streams: the time as given. 0 before there
  /// is a stream, and when a cue point ends before it starts.
  double streamTimeForContentTime(double contentTime) const;
  /// Stream time to content time, in seconds; it stands still within a break. Live streams: the
  /// time as given. 0 before there is a stream, and when any cue point ends before it starts.
  double contentTimeForStreamTime(double streamTime) const;
  /// The last cue point that starts before the time (seconds of stream time), played or not; null
  /// if there is none. What a player needs to snap back to a break that was skipped.
  std::shared_ptr<XELCuepoint> previousCuepointForStreamTime(double streamTime) const;

 private:
  static std::uint32_t createCorrelator();
  void handleStreamInitResponse_withData(const xel::HTTPResponse& response,
                                         const std::string& data);
  void handleStreamInitResponse(const xel::JSONValue& response);
  void createStreamMonitor(const xel::JSONValue& response);
  void dispatchStreamWithError_message(const std::shared_ptr<const xel::Error>& error,
                                       std::string message);

  void streamMonitor_didReceiveError(XELStreamMonitor& monitor,
                                     const std::shared_ptr<const xel::Error>& error) override;
  void streamMonitorIsReadyForPlayback(XELStreamMonitor& monitor) override;
  void streamMonitor_adBreakDidStart(XELStreamMonitor& monitor,
                                     const std::shared_ptr<XELAdBreakInfo>& info) override;
  void streamMonitor_adDidStart(XELStreamMonitor& monitor,
                                const std::shared_ptr<XELAd>& ad) override;
  void streamMonitor_adDidCrossFirstQuartile(XELStreamMonitor& monitor,
                                             const std::shared_ptr<XELAd>& ad) override;
  void streamMonitor_adDidCrossMidpoint(XELStreamMonitor& monitor,
                                        const std::shared_ptr<XELAd>& ad) override;
  void streamMonitor_adDidCrossThirdQuartile(XELStreamMonitor& monitor,
                                             const std::shared_ptr<XELAd>& ad) override;
  void streamMonitor_adDidComplete(XELStreamMonitor& monitor,
                                   const std::shared_ptr<XELAd>& ad) override;
  void streamMonitor_adBreakDidEnd(XELStreamMonitor& monitor,
                                   const std::shared_ptr<XELAdBreakInfo>& info) override;
  void streamMonitor_ad_didCountdownTo(XELStreamMonitor& monitor, const std::shared_ptr<XELAd>& ad,
                                       double remaining) override;
  void streamMonitor_didUpdateCuepoints(
      XELStreamMonitor& monitor,
      const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) override;

  std::weak_ptr<XELStreamManagerDelegate> delegate_;
  const std::shared_ptr<XELVideoDisplay> videoDisplay_;
  std::shared_ptr<XELStreamMonitor> streamMonitor_;
  std::shared_ptr<XELStreamRequest> streamRequest_;
};
