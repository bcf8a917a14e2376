#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "xel/platform/Export.h"

/// Keys of `adTagParameters`. These, and any key that begins with "xelfw_", are sent; others are
/// dropped silently.
inline constexpr std::string_view kXELStreamParamIU = "iu";
inline constexpr std::string_view kXELStreamParamDescriptionURL = "description_url";
inline constexpr std::string_view kXELStreamParamCustomParameters = "cust_params";
inline constexpr std::string_view kXELStreamParamPublisherID = "ppid";
inline constexpr std::string_view kXELStreamParamTFCD = "tfcd";
inline constexpr std::string_view kXELStreamParamOrderVariant = "dai-ov";
inline constexpr std::string_view kXELStreamParamOrderType = "dai-ot";
inline constexpr std::string_view kXELStreamParamSize = "sz";

/// What every stream request may carry. Make an `XELLiveStreamRequest` or an
/// `XELVODStreamRequest`; a request of another class is refused when it is sent.
///
/// All settings are optional, and an empty text counts as an absent one.
/// Ownership: shared; the manager keeps the request of the running session, and reads the manifest
/// URL suffix when the answer arrives. The library never changes a request. Not copyable.
/// Threads: main run loop. Errors: no operation fails.
class XEL_EXPORT XELStreamRequest {
 public:
  virtual ~XELStreamRequest();
  XELStreamRequest(const XELStreamRequest&) = delete;
  XELStreamRequest& operator=(const XELStreamRequest&) = delete;

  /// Authorises the request, unless there is an `authToken`.
  const std::optional<std::string>& apiKey() const noexcept { return apiKey_; }
  void setApiKey(std::optional<std::string> key) { apiKey_ = std::move(key); }

  /// Authorises the request; when it is not empty, the API key is not sent.
  const std::optional<std::string>& authToken() const noexcept { return authToken_; }
  void setAuthToken(std::optional<std::string> token) { authToken_ = std::move(token); }

  /// Finds the session in the ad server's stream activity monitor. Sent unescaped.
  const std::optional<std::string>& streamActivityMonitorID() const noexcept {
    return streamActivityMonitorID_;
  }
  void setStreamActivityMonitorID(std::optional<std::string> id) {
    streamActivityMonitorID_ = std::move(id);
  }

  /// Ad targeting; see the `kXELStreamParam` keys. Values are percent-encoded when sent.
  const std::map<std::string, std::string>& adTagParameters() const noexcept {
    return adTagParameters_;
  }
  void setAdTagParameters(std::map<std::string, std::string> parameters) {
    adTagParameters_ = std::move(parameters);
  }

  /// Query text for the manifest URL, with or without a leading "?". It is appended as it is, and
  /// replaces parameters of the same names.
  const std::optional<std::string>& manifestURLSuffix() const noexcept {
    return manifestURLSuffix_;
  }
  void setManifestURLSuffix(std::optional<std::string> suffix) {
    manifestURLSuffix_ = std::move(suffix);
  }

 protected:
  XELStreamRequest() = default;

 private:
  std::optional<std::string> apiKey_;
  std::optional<std::string> authToken_;
  std::optional<std::string> streamActivityMonitorID_;
  std::map<std::string, std::string> adTagParameters_;
  std::optional<std::string> manifestURLSuffix_;
};
