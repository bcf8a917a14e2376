#pragma once

#include <optional>
#include <string>

namespace xel {

/// Makes the whole process trust the authorities of a PEM file alone, wherever GLib checks https.
/// @return what is wrong with the file, if anything is.
std::optional<std::string> trustAuthoritiesOf(const std::string& caFile);

}  // namespace xel
