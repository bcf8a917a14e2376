#pragma once

#include <optional>
#include <string>

namespace xel {

/// The absolute URL that `reference` means where it stands in the document at `base` (RFC 3986
/// section 5); absent when one of them is not valid.
std::optional<std::string> resolveURL(const std::string& base, const std::string& reference);

}  // namespace xel
