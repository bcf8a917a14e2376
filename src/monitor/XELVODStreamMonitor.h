#pragma once

#include <memory>
#include <string>
#include <utility>

#include "monitor/XELStreamMonitor.h"

/// The monitor of an on-demand stream: fetches the stream info document once, before the stream is
/// loaded, and takes the ad events from the whole second in which the playhead is.
///
/// A second is handled once while the playhead stays in it; seconds that the playhead jumps over
/// are not handled at all.
class XELVODStreamMonitor final : public XELStreamMonitor {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null.
  static std::shared_ptr<XELVODStreamMonitor> initWithVideoDisplay_response(
      std::shared_ptr<XELVideoDisplay> videoDisplay, xel::JSONValue response);
  XELVODStreamMonitor(Token, std::shared_ptr<XELVideoDisplay> videoDisplay, xel::JSONValue response)
      : XELStreamMonitor(std::move(videoDisplay), std::move(response)) {}

  void startMonitoring() override;
  double contentTimeForStreamTime(double streamTime) const override;
  double streamTimeForContentTime(double contentTime) const override;
  std::shared_ptr<XELCuepoint> previousCuepointForStreamTime(double streamTime) const override;

  void videoDisplay_didProgressToTime(XELVideoDisplay& display, double time) override;

 private:
  void handleStartWithAdKey(const std::string& adKey) override;
  void requestStreamInfo(std::string_view url);
  void handleStreamInfoResponse_withData(const xel::HTTPResponse& response,
                                         const std::string& data);
  void startStream() { loadPrimaryStream(); }
  void handleTimeUpdate(double time);
  void updateCuepoints();

  double lastHandledTimeKey_ = -1;
  /// Ascending by start.
  XELStreamInfo::Cuepoints currentCuepoints_;
  bool cuepointsAnnounced_ = false;
};
