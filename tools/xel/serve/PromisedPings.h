#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/JSONValue.h"

namespace xel::serve {

/// A ping that a document promises when an event of an ad happens.
struct PromisedPing {
  std::string ad;
  std::string event;
  /// What the ad server should see, as `comparableTarget` has it.
  std::string target;
};

/// What a client puts into its pings, and where they go.
struct PingSender {
  /// As in the stream request, such as "t.1.0.0/com.example.player".
  std::string version;
  /// Domains whose tracking URLs may be measurement URLs.
  std::array<std::string, 2> measurementDomains;
  /// Of the ad server, such as "https://localhost:8443".
  std::string server;
};

struct Promise {
  /// In the order of the document's ads, and of their events.
  std::vector<PromisedPing> pings;
  /// Pings of other servers, which nobody here can see.
  std::size_t elsewhere = 0;
  /// Ads that the document's breaks say to hold, and ads with a start.
  std::size_t held = 0;
  std::size_t started = 0;
};

/// What a stream info document promises of a stream that is played from start to end.
Promise promiseOf(const JSONValue& document, const PingSender& sender);

/// The path and query of a request, without a difference between orders of the query's pieces and
/// between ways to encode them.
std::string comparableTarget(std::string_view target);

}  // namespace xel::serve
