#include "monitor/XELStreamMonitor.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "xel/platform/Platform.h"

#include "protocol/XELEnvironmentUtils.h"
#include "protocol/XELStreamInitResponse.h"
#include "tracking/XELTrackingPingHandler.h"
#include "vast/XELVastParser.h"

namespace {

using AdReport = void (XELStreamMonitorDelegate::*)(XELStreamMonitor&,
                                                    const std::shared_ptr<XELAd>&);

/// The events that the delegate hears of; any other is only pinged.
constexpr std::array<std::pair<std::string_view, AdReport>, 5> adReports = {{
    {"start", &XELStreamMonitorDelegate::streamMonitor_adDidStart},
    {"firstquartile", &XELStreamMonitorDelegate::streamMonitor_adDidCrossFirstQuartile},
    {"midpoint", &XELStreamMonitorDelegate::streamMonitor_adDidCrossMidpoint},
    {"thirdquartile", &XELStreamMonitorDelegate::streamMonitor_adDidCrossThirdQuartile},
    {"complete", &XELStreamMonitorDelegate::streamMonitor_adDidComplete},
}};

constexpr double toleratedOverrun = 1.0;

}  // namespace

XELStreamMonitor::XELStreamMonitor(std::shared_ptr<XELVideoDisplay> videoDisplay,
                                   xel::JSONValue response)
    : streamInitResponse_(std::move(response)),
      streamInfo_(XELStreamInfo::initWithStreamInfo({})),
      videoDisplay_(std::move(videoDisplay)) {}

void XELStreamMonitor::setDelegate(std::weak_ptr<XELStreamMonitorDelegate> delegate) noexcept {
  delegate_ = std::move(delegate);
  hasDelegate_ = !delegate_.expired();
}

void XELStreamMonitor::handleEvent_withAdKey(std::string_view event, const std::string& adKey) {
  if (event == "start") {
    handleStartWithAdKey(adKey);
  } else if (event == "firstquartile" || event == "midpoint" || event == "thirdquartile") {
    if (isCurrentAd(adKey)) dispatchEvent(event);
  } else if (event == "complete") {
    handleCompleteWithAdKey(adKey);
  }
}

void XELStreamMonitor::handleStartWithAdKey(const std::string& adKey) {
  if (!requestedAds_.insert(adKey).second) return;
  currentAd_ = buildAd(adKey);
  const auto ad = currentAd_;
  if (!ad) {
    xel::Platform::current().log->line("Internal Error: No tracking pings for current ad.");
    return;
  }
  adBreakStartTime_ = currentStreamTime_ - streamInfo_->previousAdsDurationForAdKey(adKey);
  if (ad->adPosition() == 1) {
    if (auto d = delegate()) d->streamMonitor_adBreakDidStart(*this, ad->adBreakInfo());
  }
  // A delegate may seek, and so have another ad started, inside its report.
  if (currentAd_ == ad) dispatchEvent("start");
  if (currentAd_ == ad) dispatchEvent("creativeview");
}

void XELStreamMonitor::handleCompleteWithAdKey(const std::string& adKey) {
  if (!isCurrentAd(adKey)) return;
  const auto ad = currentAd_;
  dispatchEvent("complete");
  if (currentAd_ == ad && isAdBreakComplete()) endAdBreak();
}

void XELStreamMonitor::dispatchEvent(std::string_view event) {
  const auto ad = currentAd_;
  if (!ad) return;
  XELTrackingPingHandler::pingEvent_forAd(event, ad);
  const auto* report = std::find_if(adReports.begin(), adReports.end(),
                                    [event](const auto& row) { return row.first == event; });
  if (report == adReports.end()) return;
  if (auto d = delegate()) (*d.*report->second)(*this, ad);
}

bool XELStreamMonitor::isAdBreakComplete() const {
  if (!currentAd_) return true;
  const std::int64_t position = streamInfo_->adPositionForAdKey(currentAd_->adKey().value_or(""));
  const std::int64_t total =
      streamInfo_->totalAdsForAdBreakKey(currentAd_->adBreakInfo()->adBreakKey());
  return position == total || position == -1 || total == -1;
}

void XELStreamMonitor::endAdBreak() {
  const auto lastAd = std::exchange(currentAd_, nullptr);
  if (auto d = delegate()) d->streamMonitor_adBreakDidEnd(*this, lastAd->adBreakInfo());
}

bool XELStreamMonitor::isCurrentAd(std::string_view adKey) const {
  return currentAd_ && currentAd_->adKey() == adKey;
}

std::shared_ptr<XELAd> XELStreamMonitor::buildAd(const std::string& adKey) const {
  const std::string vast = streamInfo_->vastForAdKey(adKey);
  if (vast.empty()) return nullptr;
  const auto ads = XELVastParser::init()->parseVastDocument(vast);
  if (ads.empty()) return nullptr;

  const std::string adBreakKey = streamInfo_->adBreakKeyForAdKey(adKey);
  const XELStreamInfo::Cuepoints& cuepoints = streamInfo_->knownCuepoints();
  const auto& ad = ads.front();
  ad->setAdKey(adKey);
  ad->setDuration(streamInfo_->durationForAdKey(adKey));
  ad->setAdPosition(streamInfo_->adPositionForAdKey(adKey));
  ad->setAdBreakInfo(XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset(
      adBreakKey, streamInfo_->totalAdsForAdBreakKey(adBreakKey),
      streamInfo_->durationForAdBreakKey(adBreakKey),
      XELStreamInfo::adBreakIndexForStartTime_cuepoints(currentStreamTime_, cuepoints),
      XELStreamInfo::timeOffsetForStartTime_cuepoints(currentStreamTime_, cuepoints)));
  ad->setAdStartTime(currentStreamTime_);
  const auto& creatives = ad->creatives();
  const auto linear = std::find_if(creatives.begin(), creatives.end(),
                                   [](const auto& creative) { return creative->isLinear(); });
  if (linear != creatives.end()) ad->setSelectedCreative(*linear);
  return ad;
}

void XELStreamMonitor::videoDisplay_didReceiveTimedMetadata(XELVideoDisplay&,
                                                            const xel::TimedMetadata&) {}

void XELStreamMonitor::videoDisplay_didProgressToTime(XELVideoDisplay&, double time) {
  currentStreamTime_ = time;
  const auto ad = currentAd_;
  if (!ad) return;
  const double breakRemaining = ad->adBreakInfo()->duration() - (time - adBreakStartTime_);
  const double adRemaining = ad->duration() - (time - ad->adStartTime());
  if (auto d = delegate()) d->streamMonitor_ad_didCountdownTo(*this, ad, adRemaining);
  const bool hasOverrun = breakRemaining <= -toleratedOverrun || adRemaining <= -toleratedOverrun;
  if (hasOverrun && currentAd_ == ad) endAdBreak();
}

void XELStreamMonitor::videoDisplay_didFailWithError(
    XELVideoDisplay&, const std::shared_ptr<const xel::Error>& error) {
  if (auto d = delegate()) d->streamMonitor_didReceiveError(*this, error);
}

void XELStreamMonitor::videoDisplayIsReadyForPlayback(XELVideoDisplay&) {
  if (auto d = delegate()) d->streamMonitorIsReadyForPlayback(*this);
}

xel::HTTPRequest XELStreamMonitor::streamInfoRequest(std::string_view url) {
  xel::HTTPRequest request;
  request.url = url;
  request.timeout = std::chrono::seconds(5);
  request.cachePolicy = xel::HTTPRequest::CachePolicy::reloadIgnoringLocalCache;
  request.headers.push_back({"User-Agent", XELEnvironmentUtils::userAgent()});
  return request;
}

bool XELStreamMonitor::replaceStreamInfo(const xel::HTTPResponse& response,
                                         const std::string& data) {
  if (response.status >= 400) return false;
  const auto parsed = xel::JSONValue::parse(data);
  if (!parsed.value.isObject()) return false;
  streamInfo_ = XELStreamInfo::initWithStreamInfo(parsed.value);
  return true;
}

void XELStreamMonitor::loadURL_withSubtitles(std::string_view url,
                                             const std::vector<xel::JSONValue>& subtitles) {
  // Whoever let go of the session may be showing another stream in the display by now.
  const bool isAbandoned = hasDelegate_ && delegate_.expired();
  if (!videoDisplay_ || isAbandoned) return;
  videoDisplay_->loadURL_withSubtitles(std::string(url), subtitles);
}

void XELStreamMonitor::loadPrimaryStream() {
  const auto manifest = streamInitResponse_[XELStreamInitResponse::streamManifestKey].text();
  if (!manifest) return;
  loadURL_withSubtitles(*manifest,
                        streamInitResponse_[XELStreamInitResponse::subtitlesKey].elements());
}
