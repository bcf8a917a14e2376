#include "common/PrintableText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "common/UTF8.h"

namespace xel {

std::string clockText(double seconds) {
  if (!(std::abs(seconds) < 1e12)) return "-";
  const auto tenths = std::llround(std::abs(seconds) * 10);
  std::array<char, 40> text;
  std::snprintf(text.data(), text.size(), "%s%lld:%02lld.%lld", seconds < 0 ? "-" : "",
                tenths / 600, tenths / 10 % 60, tenths % 10);
  return text.data();
}

std::string countText(std::int64_t count) { return count < 0 ? "?" : std::to_string(count); }

std::string printable(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const auto length = leadingCharacterLength(text);
    const auto character = text.substr(0, std::max<std::size_t>(length, 1));
    const auto isControl =
        character.size() == 1 &&
        (static_cast<unsigned char>(character[0]) < 0x20 || character[0] == 0x7F);
    const auto isC1Control = character.size() == 2 && character[0] == '\xC2' &&
                             static_cast<unsigned char>(character[1]) < 0xA0;
    if (character == "\n" || character == "\t") {
      clean += ' ';
    } else if (length == 0 || isControl || isC1Control) {
      clean += '?';
    } else {
      clean += character;
    }
    text.remove_prefix(character.size());
  }
  return clean;
}

}  // namespace xel
