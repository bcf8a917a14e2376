#include "xel/session/XELStreamManager.h"

#include <random>
#include <utility>

#include "xel/platform/Platform.h"

#include "monitor/XELLiveStreamMonitor.h"
#include "monitor/XELVODStreamMonitor.h"
#include "platform/Text.h"
#include "protocol/XELRequestBuilder.h"
#include "protocol/XELStreamInitResponse.h"

namespace {

constexpr std::string_view requestFailed = "Unable to request stream";

}  // namespace

std::shared_ptr<XELStreamManager> XELStreamManager::initWithVideoDisplay(
    std::shared_ptr<XELVideoDisplay> videoDisplay) {
  return std::make_shared<XELStreamManager>(Token(), std::move(videoDisplay));
}

XELStreamManager::XELStreamManager(Token, std::shared_ptr<XELVideoDisplay> videoDisplay)
    : videoDisplay_(std::move(videoDisplay)) {
  createCorrelator();
}

XELStreamManager::~XELStreamManager() {
  if (streamMonitor_) streamMonitor_->stopMonitoring();
}

std::uint32_t XELStreamManager::createCorrelator() {
  static const std::uint32_t correlator = [] {
    std::random_device source;
    return std::uniform_int_distribution<std::uint32_t>(0, 0xFFFFFFFE)(source);
  }();
  return correlator;
}

void XELStreamManager::requestStream(std::shared_ptr<XELStreamRequest> request) {
  streamRequest_ = std::move(request);
  auto built = XELRequestBuilder::buildRequestFromStreamRequest_correlator(streamRequest_,
                                                                           createCorrelator());
  const auto self = shared_from_this();
  const xel::Platform& platform = xel::Platform::current();
  if (!built) {
    platform.mainRunLoop->post(
        [self] { self->dispatchStreamWithError_message(nullptr, std::string(requestFailed)); });
    return;
  }
  platform.http->send(std::move(*built), [self](const xel::HTTPResult& result) {
    if (result.error) {
      self->dispatchStreamWithError_message(result.error, std::string(requestFailed));
    } else {
      self->handleStreamInitResponse_withData(result.response, result.response.body);
    }
  });
}

void XELStreamManager::handleStreamInitResponse_withData(const xel::HTTPResponse& response,
                                                         const std::string& data) {
  if (response.status < 400) {
    const auto parsed = xel::JSONValue::parse(data);
    if (parsed.error) {
      dispatchStreamWithError_message(parsed.error, "Stream request failed with internal error");
    } else {
      handleStreamInitResponse(parsed.value);
    }
    return;
  }
  const auto body = xel::isUTF8(data) ? std::optional<std::string_view>(data) : std::nullopt;
  dispatchStreamWithError_message(
      std::make_shared<const xel::Error>(
          xel::Error{std::string(xel::httpErrorDomain), response.status,
                     xel::fillTemplate("Stream initialization failed: %@", {body}), nullptr}),
      {});
}

void XELStreamManager::handleStreamInitResponse(const xel::JSONValue& response) {
  if (!XELStreamInitResponse::isValidStreamResponse(response)) {
    dispatchStreamWithError_message(nullptr, "Stream initialized with invalid response");
    return;
  }
  const xel::JSONValue configured =
      XELStreamInitResponse::configureStreamInitResponse_withRequest(response, streamRequest_);
  const std::string streamID(configured[XELStreamInitResponse::streamIDKey].text().value_or(""));
  if (auto d = delegate()) d->streamManager_didInitializeStream(*this, streamID);
  createStreamMonitor(configured);
}

void XELStreamManager::createStreamMonitor(const xel::JSONValue& response) {
  const auto type = response[XELStreamInitResponse::streamTypeKey].text();
  std::shared_ptr<XELStreamMonitor> monitor;
  if (type == "live") {
    monitor = XELLiveStreamMonitor::initWithVideoDisplay_response(videoDisplay_, response);
  } else if (type == "on_demand") {
    monitor = XELVODStreamMonitor::initWithVideoDisplay_response(videoDisplay_, response);
  } else {
    dispatchStreamWithError_message(nullptr, "Stream initialized with invalid stream type");
    return;
  }
  streamMonitor_ = monitor;
  monitor->setDelegate(std::shared_ptr<XELStreamMonitorDelegate>(
      shared_from_this(), static_cast<XELStreamMonitorDelegate*>(this)));
  monitor->startMonitoring();
}

void XELStreamManager::dispatchStreamWithError_message(
    const std::shared_ptr<const xel::Error>& error, std::string message) {
  auto reported = error;
  if (!error || error->domain != xel::httpErrorDomain) {
    reported = std::make_shared<const xel::Error>(xel::Error{
        std::string(xel::errorDomain), error ? error->code : 0, std::move(message), error});
  }
  if (auto d = delegate()) d->streamManager_didReceiveError(*this, reported);
}

double XELStreamManager::streamTimeForContentTime(double contentTime) const {
  return streamMonitor_ ? streamMonitor_->streamTimeForContentTime(contentTime) : 0;
}

double XELStreamManager::contentTimeForStreamTime(double streamTime) const {
  return streamMonitor_ ? streamMonitor_->contentTimeForStreamTime(streamTime) : 0;
}

std::shared_ptr<XELCuepoint> XELStreamManager::previousCuepointForStreamTime(
    double streamTime) const {
  return streamMonitor_ ? streamMonitor_->previousCuepointForStreamTime(streamTime) : nullptr;
}

void XELStreamManager::streamMonitor_didReceiveError(
    XELStreamMonitor&, const std::shared_ptr<const xel::Error>& error) {
  if (auto d = delegate()) d->streamManager_didReceiveError(*this, error);
}

void XELStreamManager::streamMonitorIsReadyForPlayback(XELStreamMonitor&) {
  if (auto d = delegate()) d->streamManagerIsReadyForPlayback(*this);
}

void XELStreamManager::streamMonitor_adBreakDidStart(XELStreamMonitor&,
                                                     const std::shared_ptr<XELAdBreakInfo>& info) {
  if (auto d = delegate()) d->streamManager_adBreakDidStart(*this, info);
}

void XELStreamManager::streamMonitor_adDidStart(XELStreamMonitor&,
                                                const std::shared_ptr<XELAd>& ad) {
  if (auto d = delegate()) d->streamManager_adDidStart(*this, ad);
}

void XELStreamManager::streamMonitor_adDidCrossFirstQuartile(XELStreamMonitor&,
                                                             const std::shared_ptr<XELAd>& ad) {
  if (auto d = delegate()) d->streamManager_adDidCrossFirstQuartile(*this, ad);
}

void XELStreamManager::streamMonitor_adDidCrossMidpoint(XELStreamMonitor&,
                                                        const std::shared_ptr<XELAd>& ad) {
  if (auto d = delegate()) d->streamManager_adDidCrossMidpoint(*this, ad);
}

void XELStreamManager::streamMonitor_adDidCrossThirdQuartile(XELStreamMonitor&,
                                                             const std::shared_ptr<XELAd>& ad) {
  if (auto d = delegate()) d->streamManager_adDidCrossThirdQuartile(*this, ad);
}

void XELStreamManager::streamMonitor_adDidComplete(XELStreamMonitor&,
                                                   const std::shared_ptr<XELAd>& ad) {
  if (auto d = delegate()) d->streamManager_adDidComplete(*this, ad);
}

void XELStreamManager::streamMonitor_adBreakDidEnd(XELStreamMonitor&,
                                                   const std::shared_ptr<XELAdBreakInfo>& info) {
  if (auto d = delegate()) d->streamManager_adBreakDidEnd(*this, info);
}

void XELStreamManager::streamMonitor_ad_didCountdownTo(XELStreamMonitor&,
                                                       const std::shared_ptr<XELAd>& ad,
                                                       double remaining) {
  if (auto d = delegate()) d->streamManager_ad_didCountdownTo(*this, ad, remaining);
}

void XELStreamManager::streamMonitor_didUpdateCuepoints(
    XELStreamMonitor&, const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) {
  if (auto d = delegate()) d->streamManager_didUpdateCuepoints(*this, cuepoints);
}
