#include "simulation/trace/TextUnit.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "simulation/trace/DecodedText.h"

namespace xel::simulation {
namespace {

bool isHexadecimal(std::string_view text) {
  return text.size() == 2 && std::isxdigit(static_cast<unsigned char>(text[0])) != 0 &&
         std::isxdigit(static_cast<unsigned char>(text[1])) != 0;
}

/// "%2F", also escaped again and again: "%252F".
TextUnit percentUnit(std::string_view text) {
  std::size_t at = 1;
  while (text.substr(at, 2) == "25" && isHexadecimal(text.substr(at + 2, 2))) at += 2;
  const auto decoded = DecodedText::fromPercent("%" + std::string(text.substr(at, 2)));
  if (!decoded.hasEscapes()) return {'%', 1, false};
  return {decoded.text()[0], at + 2, true};
}

TextUnit escapeUnit(std::string_view escape, DecodedText (*decode)(std::string_view)) {
  const auto decoded = decode(escape);
  const auto [begin, end] = decoded.source({0, 1});
  if (!decoded.hasEscapes() || end != escape.size()) return {escape[begin], 1, false};
  // Beyond ASCII it is a letter like any other.
  return {decoded.text().size() == 1 ? decoded.text()[0] : '\x80', escape.size(), false};
}

}  // namespace

TextUnit unitAt(std::string_view text, std::size_t at) {
  const auto rest = text.substr(std::min(at, text.size()), 16);
  if (rest.empty()) return {};
  if (rest[0] == '%') return percentUnit(rest);
  if (rest[0] == '&') {
    const auto end = std::min(rest.find(';'), rest.size() - 1);
    return escapeUnit(rest.substr(0, end + 1), DecodedText::fromXML);
  }
  if (rest[0] != '\\') return {rest[0], 1, false};
  auto unit = escapeUnit(rest.substr(0, rest.starts_with("\\u") ? 6 : 2), DecodedText::fromJSON);
  // XML within JSON.
  if (unit.character == '&' && rest.substr(unit.length).starts_with("amp;")) unit.length += 4;
  return unit;
}

std::size_t lengthOf(std::string_view part, std::string_view text, std::size_t at) {
  const auto begin = at;
  for (const char wanted : part) {
    const auto unit = unitAt(text, at);
    if (unit.length == 0 || unit.character != wanted) return 0;
    at += unit.length;
  }
  return at - begin;
}

}  // namespace xel::simulation
