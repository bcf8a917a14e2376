#include "protocol/XELRequestBuilder.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "xel/platform/Platform.h"

#include "platform/Text.h"
#include "protocol/XELEnvironmentUtils.h"

using xel::fillTemplate;

namespace {

constexpr std::string_view reservedCharacters = "!*'();:@&=+$,/?%#[]\" ";

constexpr std::array allowedKeys = {
    kXELStreamParamIU,          kXELStreamParamDescriptionURL, kXELStreamParamCustomParameters,
    kXELStreamParamPublisherID, kXELStreamParamTFCD,           kXELStreamParamOrderVariant,
    kXELStreamParamOrderType,   kXELStreamParamSize,
};
constexpr std::string_view allowedPrefix = "xelfw_";

bool isPresent(const std::optional<std::string>& text) { return text && !text->empty(); }

/// The endpoint at a host and port; at none, which no client accepts, where the text says more than
/// those, such as a scheme or a user that would have the request go elsewhere.
std::string endpoint(const std::string& hostAndPort) {
  if (hostAndPort.find_first_of("/\\?#@") == std::string::npos) return "https://" + hostAndPort;
  // Not quoted: it may hold a password.
  xel::Platform::current().log->line(
      "Error: The stream-init host must be a host name, with or without a port, and nothing else");
  return "https://";
}

}  // namespace

std::optional<xel::HTTPRequest> XELRequestBuilder::buildRequestFromStreamRequest_correlator(
    const std::shared_ptr<XELStreamRequest>& request, std::uint32_t correlator) {
  xel::HTTPRequest built;
  if (const auto live = std::dynamic_pointer_cast<XELLiveStreamRequest>(request)) {
    built.url = buildStreamInitUrlWithLiveRequest(*live);
    built.body = buildRequestBodyWithLiveRequest_correlator(*live, correlator);
  } else if (const auto vod = std::dynamic_pointer_cast<XELVODStreamRequest>(request)) {
    built.url = buildStreamInitUrlWithVODRequest(*vod);
    built.body = buildRequestBodyWithVODRequest_correlator(*vod, correlator);
  } else {
    xel::Platform::current().log->line("Error: Invalid stream request");
    return std::nullopt;
  }
  built.method = "POST";
  built.cachePolicy = xel::HTTPRequest::CachePolicy::reloadIgnoringLocalCache;
  built.timeout = std::chrono::seconds(5);
  if (isPresent(request->authToken())) {
    built.headers.push_back(
        {"Authorization", fillTemplate("TROVDAI token=\"%@\"", {request->authToken()})});
  } else if (isPresent(request->apiKey())) {
    built.headers.push_back(
        {"Authorization", fillTemplate("TROVDAI key=\"%@\"", {request->apiKey()})});
  }
  built.headers.push_back({"User-Agent", XELEnvironmentUtils::userAgent()});
  return built;
}

std::string XELRequestBuilder::buildStreamInitUrlWithLiveRequest(
    const XELLiveStreamRequest& request) {
  return endpoint(xel::Platform::current().services.liveHost) +
         fillTemplate("/ssai/event/%@/streams", {request.assetKey()});
}

std::string XELRequestBuilder::buildStreamInitUrlWithVODRequest(
    const XELVODStreamRequest& request) {
  return endpoint(xel::Platform::current().services.vodHost) +
         fillTemplate("/ondemand/hls/content/%@/vid/%@/streams",
                      {request.contentSourceID(), request.videoID()});
}

std::string XELRequestBuilder::buildRequestBodyWithLiveRequest_correlator(
    const XELLiveStreamRequest& request, std::uint32_t correlator) {
  return buildRequestBodyWithRequest_correlator(request, correlator) +
         fillTemplate("&attempt_preroll=%@", {request.attemptPreroll() ? "true" : "false"});
}

std::string XELRequestBuilder::buildRequestBodyWithVODRequest_correlator(
    const XELVODStreamRequest& request, std::uint32_t correlator) {
  return buildRequestBodyWithRequest_correlator(request, correlator);
}

std::string XELRequestBuilder::buildRequestBodyWithRequest_correlator(
    const XELStreamRequest& request, std::uint32_t correlator) {
  std::string body =
      fillTemplate("correlator=%@&url=%@&is_lat=%d&rdid=%@&idtype=tvOS&sdkv=%@&submodel=%@",
                   {std::to_string(correlator), XELEnvironmentUtils::appName(),
                    XELEnvironmentUtils::isAdvertisingTrackingEnabled() ? "0" : "1",
                    XELEnvironmentUtils::advertisingIdentifier(),
                    XELEnvironmentUtils::sdkVersionWithAppName(), XELEnvironmentUtils::submodel()});
  for (const auto& [key, value] : request.adTagParameters()) {
    if (isValidAdTagParam(key) && !value.empty()) {
      body += fillTemplate("&%@=%@", {key, escapeString(value)});
    }
  }
  if (isPresent(request.streamActivityMonitorID())) {
    body += fillTemplate("&sam_id=%@", {request.streamActivityMonitorID()});
  }
  return body;
}

std::string XELRequestBuilder::escapeString(std::string_view text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 && reservedCharacters.find(c) == std::string_view::npos) {
      escaped += c;
    } else {
      escaped += '%';
      escaped += digits[byte >> 4];
      escaped += digits[byte & 15];
    }
  }
  return escaped;
}

bool XELRequestBuilder::isValidAdTagParam(std::string_view key) noexcept {
  return std::find(allowedKeys.begin(), allowedKeys.end(), key) != allowedKeys.end() ||
         key.starts_with(allowedPrefix);
}
