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

}  // namespace xel
