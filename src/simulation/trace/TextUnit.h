#pragma once

#include <cstddef>
#include <string_view>

namespace xel::simulation {

/// One character of a text, and how it is written there: as it is, or escaped for JSON, for XML,
/// for a URL, or for several of them.
struct TextUnit {
  char character = 0;
  std::size_t length = 0;
  bool isPercent = false;
};

/// The character that stands there; of length 0 at the end of the text.
TextUnit unitAt(std::string_view text, std::size_t at);

/// The length of what begins there as the part does; 0 where something else does.
std::size_t lengthOf(std::string_view part, std::string_view text, std::size_t at);

}  // namespace xel::simulation
