#pragma once

#include <string_view>

namespace xel::simulation {

/// Whether the library itself looks for this word in documents and URLs, in any case. Where such a
/// word is also a secret it tells nothing within other texts, and the library must still find it.
bool isProtocolWord(std::string_view word);

}  // namespace xel::simulation
