#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace xel {

/// Fills the placeholders of a template, "%@" or "%d", in order. An absent value reads "(null)".
std::string fillTemplate(std::string_view textTemplate,
                         std::initializer_list<std::optional<std::string_view>> values);

/// The text without blanks, tabs and line ends at either end.
std::string_view trimmed(std::string_view text) noexcept;

/// The text with ASCII letters in lower case.
std::string lowercased(std::string_view text);

/// The digits, with an optional sign, that the text begins with; 0 if there are none. What is
/// beyond 64 bits becomes the nearest 64-bit integer.
std::int64_t leadingInteger(std::string_view text) noexcept;

/// Whether every byte belongs to a well-formed UTF-8 sequence (RFC 3629).
bool isUTF8(std::string_view text) noexcept;

}  // namespace xel
