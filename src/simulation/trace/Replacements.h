#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace xel::simulation {

/// What stands in a trace for what must not: the same for the same value, throughout the trace.
class Replacements {
 public:
  /// "redacted-1" and so on; for a UUID, a UUID with the number at its end. What is a replacement
  /// already stays as it is.
  std::string of(std::string_view value);

  /// Whether the text is a UUID with hyphens, in either case.
  static bool isUUID(std::string_view text);

 private:
  std::unordered_map<std::string, std::string> replacements_;
};

}  // namespace xel::simulation
