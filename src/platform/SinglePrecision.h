#pragma once

#include "xel/platform/JSONValue.h"

namespace xel {

/// The number as a single-precision float, widened; 0 where there is none, or a float cannot hold
/// it.
double singlePrecision(const JSONValue& value) noexcept;

}  // namespace xel
