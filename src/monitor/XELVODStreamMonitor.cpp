#include "monitor/XELVODStreamMonitor.h"

#include <algorithm>
#include <cmath>

#include "xel/platform/Platform.h"

#include "platform/Text.h"
#include "protocol/XELStreamInitResponse.h"

std::shared_ptr<XELVODStreamMonitor> XELVODStreamMonitor::initWithVideoDisplay_response(
    std::shared_ptr<XELVideoDisplay> videoDisplay, xel::JSONValue response) {
  return make<XELVODStreamMonitor>(Token(), std::move(videoDisplay), std::move(response));
}

void XELVODStreamMonitor::startMonitoring() {
  lastHandledTimeKey_ = -1;
  const auto url = streamInitResponse()[XELStreamInitResponse::timeEventsURLKey].text();
  if (!url) {
    xel::Platform::current().log->line("Internal Error: No tracking pings for this stream.");
    startStream();
    return;
  }
  requestStreamInfo(*url);
}

void XELVODStreamMonitor::requestStreamInfo(std::string_view url) {
  const auto self = std::static_pointer_cast<XELVODStreamMonitor>(shared_from_this());
  xel::Platform::current().http->send(
      streamInfoRequest(url), [self](const xel::HTTPResult& result) {
        if (result.error) {
          self->startStream();
        } else {
          self->handleStreamInfoResponse_withData(result.response, result.response.body);
        }
      });
}

void XELVODStreamMonitor::handleStreamInfoResponse_withData(const xel::HTTPResponse& response,
                                                            const std::string& data) {
  if (replaceStreamInfo(response, data)) updateCuepoints();
  startStream();
}

void XELVODStreamMonitor::updateCuepoints() {
  XELStreamInfo::Cuepoints cuepoints = streamInfo()->cuepoints();
  const bool unchanged = cuepointsAnnounced_ &&
                         std::equal(cuepoints.begin(), cuepoints.end(), currentCuepoints_.begin(),
                                    currentCuepoints_.end(),
                                    [](const auto& a, const auto& b) { return a->isEqual(*b); });
  if (unchanged) return;
  currentCuepoints_ = std::move(cuepoints);
  cuepointsAnnounced_ = true;
  if (auto d = delegate()) d->streamMonitor_didUpdateCuepoints(*this, currentCuepoints_);
}

void XELVODStreamMonitor::videoDisplay_didProgressToTime(XELVideoDisplay& display, double time) {
  XELStreamMonitor::videoDisplay_didProgressToTime(display, time);
  handleTimeUpdate(time);
}

void XELVODStreamMonitor::handleTimeUpdate(double time) {
  if (!std::isfinite(time)) return;
  const double timeKey = std::floor(time);
  if (timeKey == lastHandledTimeKey_) return;
  lastHandledTimeKey_ = timeKey;
  for (const xel::JSONValue& event : streamInfo()->eventArrayForTime(timeKey)) {
    const std::string type = xel::lowercased(event["type"].text().value_or(""));
    const std::string ad(event["ad"].text().value_or(""));
    if (!ad.empty() && !type.empty()) handleEvent_withAdKey(type, ad);
  }
}

void XELVODStreamMonitor::handleStartWithAdKey(const std::string& adKey) {
  const double startTimeKey = lastHandledTimeKey_;
  XELStreamMonitor::handleStartWithAdKey(adKey);
  const XELStreamInfo::Cuepoints cuepoints = currentCuepoints_;
  for (const auto& cuepoint : cuepoints) {
    if (cuepoint->startTime() != startTimeKey || cuepoint->isPlayed()) continue;
    cuepoint->setPlayed(true);
    if (auto d = delegate()) d->streamMonitor_didUpdateCuepoints(*this, cuepoints);
  }
}

double XELVODStreamMonitor::contentTimeForStreamTime(double streamTime) const {
  double contentTime = streamTime;
  for (const auto& cuepoint : currentCuepoints_) {
    const double start = cuepoint->startTime();
    const double end = cuepoint->endTime();
    if (start > end) return 0;
    if (streamTime >= end) {
      contentTime -= end - start;
    } else if (start < streamTime) {
      contentTime -= streamTime - start;
    }
  }
  return contentTime;
}

double XELVODStreamMonitor::streamTimeForContentTime(double contentTime) const {
  double streamTime = contentTime;
  double contentSoFar = 0;
  double previousEnd = 0;
  for (const auto& cuepoint : currentCuepoints_) {
    const double start = cuepoint->startTime();
    const double end = cuepoint->endTime();
    if (start > end) return 0;
    contentSoFar += start - previousEnd;
    if (contentSoFar > contentTime) return streamTime;
    streamTime += end - start;
    previousEnd = end;
  }
  return streamTime;
}

std::shared_ptr<XELCuepoint> XELVODStreamMonitor::previousCuepointForStreamTime(
    double streamTime) const {
  const auto previous = std::find_if(
      currentCuepoints_.rbegin(), currentCuepoints_.rend(),
      [streamTime](const auto& cuepoint) { return cuepoint->startTime() < streamTime; });
  return previous == currentCuepoints_.rend() ? nullptr : *previous;
}
