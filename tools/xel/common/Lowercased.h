#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace xel {

/// The text with the letters A to Z in lower case, whatever the locale.
inline std::string lowercased(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

}  // namespace xel
