#pragma once

#include <string>
#include <string_view>

#include "xel/platform/Platform.h"

namespace xel {

/// Whether a required parameter has a value; logs it when it has none.
inline bool isSatisfied(std::string_view name, std::string_view value) {
  if (!value.empty()) return true;
  Platform::current().log->line("Invalid parameter not satisfying: " + std::string(name));
  return false;
}

}  // namespace xel
