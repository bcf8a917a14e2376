#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace xel {

/// Seconds as people read them, such as "1:02.4"; "-" when they are not a number.
std::string clockText(double seconds);

/// "?" for a count that is not known, which the library gives as -1.
std::string countText(std::int64_t count);

/// The text on one line, safe to show on a terminal: line ends and tabs become spaces, other
/// control characters and bytes that are not UTF-8 are replaced.
std::string printable(std::string_view text);

}  // namespace xel
