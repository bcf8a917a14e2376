#include "inspect/Wording.h"

#include <array>
#include <charconv>
#include <cmath>

#include "common/PrintableText.h"

namespace xel::inspect {

std::string shortened(std::string_view text) {
  constexpr std::size_t longest = 80;
  if (text.size() <= longest) return printable(text);
  auto length = longest;
  while ((static_cast<unsigned char>(text[length]) & 0xC0) == 0x80 && length > 0) --length;
  return printable(text.substr(0, length)) + "…";
}

std::string quoted(std::string_view text) { return '"' + shortened(text) + '"'; }

std::string counted(std::size_t count, const std::string& thing) {
  return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

std::string listed(const std::vector<std::string>& things) {
  std::string text;
  for (std::size_t i = 0; i < things.size(); ++i) {
    if (i > 0) text += i + 1 == things.size() ? " and " : ", ";
    text += things[i];
  }
  return text;
}

std::string numberText(double number) {
  std::array<char, 32> digits;
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  return {digits.data(), written.ptr};
}

}  // namespace xel::inspect
