#pragma once

#include <string>
#include <string_view>

namespace xel::simulation {

/// The text with U+FFFD for every byte that is not part of well-formed UTF-8.
std::string withValidUTF8(std::string_view text);

}  // namespace xel::simulation
