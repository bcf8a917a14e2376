#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xel/display/XELVideoDisplay.h"
#include "xel/model/XELAd.h"
#include "xel/model/XELCuepoint.h"
#include "xel/monitor/XELStreamMonitorDelegate.h"
#include "xel/platform/HTTPClient.h"
#include "xel/platform/JSONValue.h"

#include "model/XELStreamInfo.h"

/// Follows the playback of one stream and turns it into ad events, pings and a countdown.
///
/// The base owns the state of the ad that is playing; a subclass decides when an ad event happens.
/// It is the delegate of its display. Events of an ad are handled once the ad has started, and an
/// ad starts at most once in a monitor's life.
/// Ownership: held by the stream manager, and by its own requests and timer; holds the display, and
/// its delegate weakly. Whoever calls in keeps the monitor alive for the call, since a delegate may
/// let go of it.
/// Threads: main run loop. Errors: display failures are passed on; the rest is logged or dropped.
class XELStreamMonitor : public std::enable_shared_from_this<XELStreamMonitor>,
                         public XELVideoDisplayDelegate {
 public:
  ~XELStreamMonitor() override = default;
  XELStreamMonitor(const XELStreamMonitor&) = delete;
  XELStreamMonitor& operator=(const XELStreamMonitor&) = delete;

  std::shared_ptr<XELStreamMonitorDelegate> delegate() const noexcept { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELStreamMonitorDelegate> delegate) noexcept;

  virtual void startMonitoring() {}
  virtual void stopMonitoring() {}

  /// Seconds; the time as given where the stream has no cue points.
  virtual double contentTimeForStreamTime(double streamTime) const { return streamTime; }
  virtual double streamTimeForContentTime(double contentTime) const { return contentTime; }
  virtual std::shared_ptr<XELCuepoint> previousCuepointForStreamTime(double) const {
    return nullptr;
  }

  const xel::JSONValue& streamInitResponse() const noexcept { return streamInitResponse_; }
  const std::shared_ptr<XELVideoDisplay>& videoDisplay() const noexcept { return videoDisplay_; }
  const std::set<std::string, std::less<>>& requestedAds() const noexcept { return requestedAds_; }
  const std::shared_ptr<XELAd>& currentAd() const noexcept { return currentAd_; }
  /// Seconds of stream time, from the last progress report.
  double currentStreamTime() const noexcept { return currentStreamTime_; }
  /// Seconds of stream time at which the current break began, inferred when an ad starts.
  double adBreakStartTime() const noexcept { return adBreakStartTime_; }

  void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay& display,
                                            const xel::TimedMetadata& metadata) override;
  void videoDisplay_didProgressToTime(XELVideoDisplay& display, double time) override;
  void videoDisplay_didFailWithError(XELVideoDisplay& display,
                                     const std::shared_ptr<const xel::Error>& error) override;
  void videoDisplayIsReadyForPlayback(XELVideoDisplay& display) override;

 protected:
  XELStreamMonitor(std::shared_ptr<XELVideoDisplay> videoDisplay, xel::JSONValue response);

  /// Makes a monitor and sets it as its display's delegate.
  template <typename Monitor, typename... Arguments>
  static std::shared_ptr<Monitor> make(Arguments&&... arguments) {
    auto monitor = std::make_shared<Monitor>(std::forward<Arguments>(arguments)...);
    if (monitor->videoDisplay_) monitor->videoDisplay_->setDelegate(monitor);
    return monitor;
  }

  /// Never null; knows nothing until a document has arrived.
  const std::shared_ptr<XELStreamInfo>& streamInfo() const noexcept { return streamInfo_; }

  /// @param event lower case.
  void handleEvent_withAdKey(std::string_view event, const std::string& adKey);
  virtual void handleStartWithAdKey(const std::string& adKey);
  virtual void handleCompleteWithAdKey(const std::string& adKey);
  void dispatchEvent(std::string_view event);
  bool isAdBreakComplete() const;

  /// The request for a stream info document.
  static xel::HTTPRequest streamInfoRequest(std::string_view url);
  /// Replaces the stream info document by the one that was answered. False, with the earlier one
  /// kept, when the status is 400 or more or the body is no JSON object.
  bool replaceStreamInfo(const xel::HTTPResponse& response, const std::string& data);
  /// Does nothing once the delegate is gone.
  void loadURL_withSubtitles(std::string_view url, const std::vector<xel::JSONValue>& subtitles);
  /// Loads the main stream with its subtitles; does nothing when the stream-init response names
  /// none.
  void loadPrimaryStream();

 private:
  std::shared_ptr<XELAd> buildAd(const std::string& adKey) const;
  bool isCurrentAd(std::string_view adKey) const;
  void endAdBreak();

  std::weak_ptr<XELStreamMonitorDelegate> delegate_;
  bool hasDelegate_ = false;
  const xel::JSONValue streamInitResponse_;
  std::shared_ptr<XELStreamInfo> streamInfo_;
  const std::shared_ptr<XELVideoDisplay> videoDisplay_;
  std::set<std::string, std::less<>> requestedAds_;
  double currentStreamTime_ = 0;
  double adBreakStartTime_ = 0;
  std::shared_ptr<XELAd> currentAd_;
};
