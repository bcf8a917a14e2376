#pragma once

#include <string>

#include "xel/platform/RedirectRule.h"

namespace xel {

/// What all transfers of one client have in common.
struct CurlSettings {
  /// A PEM file of the certificate authorities to trust; empty: the system's.
  std::string caFile = {};
  RedirectRule redirects = RedirectRule::notInward;
};

}  // namespace xel
