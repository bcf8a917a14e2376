#include "monitor/XELLiveStreamMonitor.h"

#include "xel/platform/Platform.h"

#include "platform/SinglePrecision.h"
#include "platform/Text.h"
#include "protocol/XELStreamInitResponse.h"

std::shared_ptr<XELLiveStreamMonitor> XELLiveStreamMonitor::initWithVideoDisplay_response(
    std::shared_ptr<XELVideoDisplay> videoDisplay, xel::JSONValue response) {
  return make<XELLiveStreamMonitor>(Token(), std::move(videoDisplay), std::move(response));
}

void XELLiveStreamMonitor::startMonitoring() {
  if (!streamInitResponse()[XELStreamInitResponse::id3EventsURLKey].text()) {
    xel::Platform::current().log->line("Internal Error: No tracking pings for this stream.");
    startStreamIfNotStarted();
    return;
  }
  const auto self = std::static_pointer_cast<XELLiveStreamMonitor>(shared_from_this());
  pollingTimer_ = xel::Platform::current().mainRunLoop->every(
      pollingFrequency(), [self] { self->requestStreamInfo(); });
  requestStreamInfo();
}

void XELLiveStreamMonitor::stopMonitoring() {
  if (!pollingTimer_) return;
  xel::Platform::current().mainRunLoop->cancel(*pollingTimer_);
  pollingTimer_.reset();
}

double XELLiveStreamMonitor::pollingFrequency() const {
  constexpr double whenNotGiven = 10.0;
  const double given =
      xel::singlePrecision(streamInitResponse()[XELStreamInitResponse::pollingFrequencyKey]);
  return given > 0 ? given : whenNotGiven;
}

void XELLiveStreamMonitor::requestStreamInfo() {
  const auto self = std::static_pointer_cast<XELLiveStreamMonitor>(shared_from_this());
  xel::Platform::current().http->send(
      streamInfoRequest(
          streamInitResponse()[XELStreamInitResponse::id3EventsURLKey].text().value_or("")),
      [self](const xel::HTTPResult& result) {
        if (result.error) {
          self->startStreamIfNotStarted();
        } else {
          self->handleStreamInfoResponse_withData(result.response, result.response.body);
        }
      });
}

void XELLiveStreamMonitor::handleStreamInfoResponse_withData(const xel::HTTPResponse& response,
                                                             const std::string& data) {
  replaceStreamInfo(response, data);
  startStreamIfNotStarted();
}

void XELLiveStreamMonitor::startStreamIfNotStarted() {
  if (streamLoaded_) return;
  streamLoaded_ = true;
  if (const auto preroll = streamInitResponse()[XELStreamInitResponse::prerollManifestKey].text()) {
    prerollPlaying_ = true;
    loadURL_withSubtitles(*preroll, {});
  } else {
    loadPrimaryStream();
  }
}

void XELLiveStreamMonitor::videoDisplay_didReceiveTimedMetadata(
    XELVideoDisplay&, const xel::TimedMetadata& metadata) {
  const auto text = metadata.find("TXXX");
  if (text != metadata.end()) handleMetadataUpdate(text->second);
}

void XELLiveStreamMonitor::handleMetadataUpdate(const std::string& metadata) {
  const std::string adKey = streamInfo()->adKeyForMetadata(metadata);
  const std::string event = streamInfo()->eventForMetadata(metadata);
  if (!adKey.empty() && !event.empty()) handleEvent_withAdKey(xel::lowercased(event), adKey);
}

void XELLiveStreamMonitor::handleCompleteWithAdKey(const std::string& adKey) {
  XELStreamMonitor::handleCompleteWithAdKey(adKey);
  if (isAdBreakComplete() && prerollPlaying_) {
    prerollPlaying_ = false;
    loadPrimaryStream();
  }
}
