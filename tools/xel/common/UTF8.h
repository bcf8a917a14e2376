#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace xel {

/// The length in bytes of the well-formed character that `text` begins with; 0 when it begins with
/// none.
std::size_t leadingCharacterLength(std::string_view text);

/// The text with U+FFFD for every byte that is not part of well-formed UTF-8.
std::string withValidUTF8(std::string_view text);

}  // namespace xel
