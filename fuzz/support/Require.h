#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace xel::fuzz {

/// Ends the process with what is wrong, if it does not hold.
inline void require(bool holds, std::string_view wrong) {
  if (holds) return;
  std::fprintf(stderr, "broken: %.*s\n", static_cast<int>(wrong.size()), wrong.data());
  std::abort();
}

}  // namespace xel::fuzz
