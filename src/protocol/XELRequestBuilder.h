#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "xel/platform/HTTPClient.h"
#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELVODStreamRequest.h"

/// Makes the one request that opens a stream session.
///
/// Threads: main run loop. Errors: a request of an unknown class yields nothing; identifiers that
/// make the URL invalid are left to the HTTP client to refuse.
class XELRequestBuilder final {
 public:
  XELRequestBuilder() = delete;

  /// Nothing, with a line in the diagnostic log, when the request is neither live nor VOD.
  static std::optional<xel::HTTPRequest> buildRequestFromStreamRequest_correlator(
      const std::shared_ptr<XELStreamRequest>& request, std::uint32_t correlator);
  static std::string buildStreamInitUrlWithLiveRequest(const XELLiveStreamRequest& request);
  static std::string buildStreamInitUrlWithVODRequest(const XELVODStreamRequest& request);
  static std::string buildRequestBodyWithLiveRequest_correlator(const XELLiveStreamRequest& request,
                                                                std::uint32_t correlator);
  static std::string buildRequestBodyWithVODRequest_correlator(const XELVODStreamRequest& request,
                                                               std::uint32_t correlator);
  /// What the bodies of both kinds begin with.
  static std::string buildRequestBodyWithRequest_correlator(const XELStreamRequest& request,
                                                            std::uint32_t correlator);
  /// Percent-encodes the delimiters of RFC 3986 section 2.2, the percent sign, the double quote,
  /// the blank, and every byte that is not ASCII.
  static std::string escapeString(std::string_view text);
  static bool isValidAdTagParam(std::string_view key) noexcept;
};
