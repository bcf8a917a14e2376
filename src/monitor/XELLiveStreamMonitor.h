#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "xel/platform/RunLoop.h"

#include "monitor/XELStreamMonitor.h"

/// The monitor of a live stream: polls the stream info document, plays the pre-roll before the main
/// stream, and takes the ad events from the stream's "TXXX" metadata.
///
/// The stream starts once: when the first poll has been answered, well or not, or at once when
/// there is nothing to poll. The main stream follows the pre-roll when the last ad of the
/// pre-roll's break completes.
/// Ownership: the polling timer keeps the monitor alive until `stopMonitoring`, a request in flight
/// until it is answered.
class XELLiveStreamMonitor final : public XELStreamMonitor {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null.
  static std::shared_ptr<XELLiveStreamMonitor> initWithVideoDisplay_response(
      std::shared_ptr<XELVideoDisplay> videoDisplay, xel::JSONValue response);
  XELLiveStreamMonitor(Token, std::shared_ptr<XELVideoDisplay> videoDisplay,
                       xel::JSONValue response)
      : XELStreamMonitor(std::move(videoDisplay), std::move(response)) {}

  void startMonitoring() override;
  /// Ends the polling; answers on their way are still handled.
  void stopMonitoring() override;

  /// A manifest, pre-roll or main, has been handed to the display.
  bool isStreamLoaded() const noexcept { return streamLoaded_; }
  /// The main stream has still to follow the pre-roll.
  bool isPrerollPlaying() const noexcept { return prerollPlaying_; }
  /// The polling period in seconds.
  double pollingFrequency() const;

  void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay& display,
                                            const xel::TimedMetadata& metadata) override;

 private:
  void handleCompleteWithAdKey(const std::string& adKey) override;
  void requestStreamInfo();
  void handleStreamInfoResponse_withData(const xel::HTTPResponse& response,
                                         const std::string& data);
  void startStreamIfNotStarted();
  void handleMetadataUpdate(const std::string& metadata);

  std::optional<xel::RunLoop::TimerID> pollingTimer_;
  bool streamLoaded_ = false;
  bool prerollPlaying_ = false;
};
