#include "tracking/XELTrackingPingHandler.h"

#include <algorithm>
#include <map>
#include <utility>

#include "xel/platform/Platform.h"

#include "platform/Text.h"
#include "protocol/XELEnvironmentUtils.h"

namespace {

using Parameters = std::map<std::string, std::string>;

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::string replaceAll(std::string_view text, std::string_view part, std::string_view by) {
  std::string replaced;
  for (std::size_t found; (found = text.find(part)) != std::string_view::npos;) {
    replaced += text.substr(0, found);
    replaced += by;
    text.remove_prefix(found + part.size());
  }
  replaced += text;
  return replaced;
}

/// The pieces of a query that have exactly one "=", still encoded.
Parameters parametersOf(std::string_view query) {
  Parameters parameters;
  while (!query.empty()) {
    const std::size_t end = std::min(query.find('&'), query.size());
    const std::string_view piece = query.substr(0, end);
    const std::size_t equals = piece.find('=');
    if (equals != std::string_view::npos && equals == piece.rfind('=')) {
      parameters[std::string(piece.substr(0, equals))] = piece.substr(equals + 1);
    }
    query.remove_prefix(std::min(end + 1, query.size()));
  }
  return parameters;
}

void ping(const std::string& event, const std::string& trackingURL, const std::string& userAgent) {
  xel::HTTPRequest request;
  request.url = XELTrackingPingHandler::replaceMacros(trackingURL);
  // Asked first, as most URLs are none and need not be taken apart.
  if (XELTrackingPingHandler::isOrvaneURL(request.url)) {
    if (const auto url = xel::URL::parse(request.url, xel::URL::Brackets::tolerated)) {
      request.url = XELTrackingPingHandler::addSDKParams(*url);
    }
  }
  request.headers.push_back({"User-Agent", userAgent});
  request.trackingEvent = event;
  xel::Platform::current().http->send(std::move(request), [event](const xel::HTTPResult& result) {
    if (result.error || result.response.status >= 400) {
      xel::Platform::current().log->line(
          xel::fillTemplate("Internal Error: Tracking ping failed for event: %@", {event}));
    }
  });
}

void pingAll(std::string_view event, const xel::TrackedEvents& events) {
  const auto urls = events.trackingURLsForEvent(event);
  if (!urls) return;
  const std::string userAgent = XELEnvironmentUtils::userAgent();
  for (const std::string& url : *urls) ping(std::string(event), url, userAgent);
}

}  // namespace

void XELTrackingPingHandler::pingEvent_forAd(std::string_view event,
                                             const std::shared_ptr<XELAd>& ad) {
  if (!ad) return;
  pingAll(event, *ad);
  if (const auto creative = ad->selectedCreative()) pingAll(event, *creative);
}

std::string XELTrackingPingHandler::replaceMacros(std::string_view url) {
  constexpr std::string_view versionMacro = "[SDKV]";
  if (!contains(url, versionMacro)) return std::string(url);
  return replaceAll(url, versionMacro, XELEnvironmentUtils::sdkVersion());
}

std::string XELTrackingPingHandler::addSDKParams(const xel::URL& url) {
  const auto query = url.query();
  if (!query || !isOrvaneURL(url.text())) return url.text();
  Parameters parameters = parametersOf(*query);
  parameters["sdkv"] = XELEnvironmentUtils::sdkVersionWithAppName();
  parameters["ssss"] = "oxel";

  std::string rewritten = query->empty() ? url.text() : replaceAll(url.text(), *query, "");
  for (const auto& [name, value] : parameters) {
    rewritten += xel::fillTemplate("%@=%@&", {name, value});
  }
  rewritten.pop_back();
  return rewritten;
}

bool XELTrackingPingHandler::isOrvaneURL(std::string_view url) {
  const auto& domains = xel::Platform::current().services.measurementDomains;
  if (std::none_of(domains.begin(), domains.end(), [url](const std::string& domain) {
        return !domain.empty() && contains(url, domain);
      })) {
    return false;
  }
  if (contains(url, "/pagead/conversion") || contains(url, "/kolpad/live/conversion") ||
      contains(url, "/pagead/adview")) {
    return contains(url, "ai=") && contains(url, "sigh=");
  }
  return contains(url, "/pcs/view") && contains(url, "xai=") && contains(url, "sig=");
}
