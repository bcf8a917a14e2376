#include "platform/Text.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace xel {

std::string fillTemplate(std::string_view textTemplate,
                         std::initializer_list<std::optional<std::string_view>> values) {
  std::string filled;
  auto value = values.begin();
  while (value != values.end()) {
    const std::size_t percent = textTemplate.find('%');
    if (percent == std::string_view::npos) break;
    filled += textTemplate.substr(0, percent);
    filled += value->value_or("(null)");
    textTemplate.remove_prefix(percent + 2);
    ++value;
  }
  filled += textTemplate;
  return filled;
}

std::string_view trimmed(std::string_view text) noexcept {
  constexpr std::string_view blanks = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string lowercased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::int64_t leadingInteger(std::string_view text) noexcept {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    return text[0] == '-' ? std::numeric_limits<std::int64_t>::min()
                          : std::numeric_limits<std::int64_t>::max();
  }
  return value;
}

bool isUTF8(std::string_view text) noexcept {
  while (!text.empty()) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size()) return false;
    for (std::size_t i = 1; i < length; ++i) {
      if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return false;
    }
    if (length > 2) {
      // Neither longer than needed, nor a surrogate, nor beyond U+10FFFF.
      const auto second = static_cast<unsigned char>(text[1]);
      if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
          (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) {
        return false;
      }
    }
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace xel
