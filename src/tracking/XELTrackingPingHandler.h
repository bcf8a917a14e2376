#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "xel/model/XELAd.h"

#include "platform/URL.h"

/// Sends the tracking pings of an ad's events and forgets them; a ping that fails is only logged.
///
/// Threads: main run loop. Errors: no operation fails.
class XELTrackingPingHandler final {
 public:
  XELTrackingPingHandler() = delete;

  /// Requests every URL that the ad, and then its selected creative, filed under the event.
  /// @param ad may be null.
  static void pingEvent_forAd(std::string_view event, const std::shared_ptr<XELAd>& ad);

  /// The URL text with "[SDKV]" filled in.
  static std::string replaceMacros(std::string_view url);

  /// A measurement URL with the library's own parameters in its query, where pieces that are no
  /// "name=value" are dropped and of pieces of one name the last counts; any other URL, and one
  /// without a query, as it is.
  static std::string addSDKParams(const xel::URL& url);

  /// Whether the text looks like one of the ad server's measurement URLs. Plain substring tests,
  /// loose on purpose.
  static bool isOrvaneURL(std::string_view url);
};
