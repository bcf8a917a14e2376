#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "xel/platform/RedirectRule.h"

#include "backends/curl/AddressZone.h"

namespace xel {

/// Judges each hop of one request, from the first URL over all redirects, by one rule.
///
/// By the address that is connected to, so that a name which resolves anew for each look-up
/// deceives nobody. Over a proxy that address is the proxy's and tells nothing: such a hop counts
/// as one on the internet.
class RedirectGuard {
 public:
  struct Hop {
    /// Absolute, http or https.
    std::string_view url;
    std::string_view address;
    /// This end of the connection.
    std::string_view localAddress;
    int port = 0;
    bool isRedirect = false;
  };

  RedirectGuard(RedirectRule rule, bool isPing) : rule_(rule), isPing_(isPing) {}

  /// Whether the request may be sent on.
  bool allows(const Hop& hop);

  /// Why the last hop was not allowed, as one sentence; empty if it was.
  const std::string& refusal() const noexcept { return refusal_; }

 private:
  std::string reasonAgainst(bool isSecure, AddressZone zone) const;

  const RedirectRule rule_;
  const bool isPing_;
  bool wasSecure_ = false;
  AddressZone zone_ = AddressZone::machine;
  std::string refusal_;
};

}  // namespace xel
