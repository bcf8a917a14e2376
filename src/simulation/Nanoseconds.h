#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace xel::simulation {

/// Seconds as whole nanoseconds, at most 100 years; 0 for what is not positive, or not a number.
inline std::int64_t nanoseconds(double seconds) {
  constexpr double longestSpan = 100 * 365.25 * 24 * 3600;
  return seconds > 0 ? std::llround(std::min(seconds, longestSpan) * 1e9) : 0;
}

}  // namespace xel::simulation
