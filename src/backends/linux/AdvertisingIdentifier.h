#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace xel {

/// Stands for "no advertising identifier".
inline constexpr std::string_view zeroUUID = "00000000-0000-0000-0000-000000000000";

/// A UUID as text (RFC 9562 section 4) in upper case; absent if the text is not one.
std::optional<std::string> canonicalUUID(std::string_view text);

}  // namespace xel
