#pragma once

#include <cstddef>
#include <string_view>

namespace xel::inspect {

// The limits that the library sets to XML.

inline constexpr std::size_t maxBytes = std::size_t{64} << 20;
inline constexpr std::size_t maxDepth = 256;
inline constexpr int maxAttributes = 256;
inline constexpr std::size_t maxBytesOfNames = std::size_t{1} << 20;

/// Where the first tag with too many attributes begins; the end when there is none.
std::size_t tagOverLimit(std::string_view text);

}  // namespace xel::inspect
