#include "simulation/trace/DecodedText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>

#include <boost/locale/utf.hpp>

namespace xel::simulation {
namespace {

std::optional<std::uint32_t> number(std::string_view digits, int base) {
  std::uint32_t value = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  if (digits.empty() || error != std::errc() || end != digits.data() + digits.size()) return {};
  return value;
}

bool append(std::optional<std::uint32_t> codePoint, std::string& to) {
  if (!codePoint || !boost::locale::utf::is_valid_codepoint(*codePoint)) return false;
  boost::locale::utf::utf_traits<char>::encode(*codePoint, std::back_inserter(to));
  return true;
}

std::optional<std::uint32_t> jsonUnit(std::string_view text) {
  if (text.size() < 6 || !text.starts_with("\\u")) return {};
  return number(text.substr(2, 4), 16);
}

std::size_t readJSON(std::string_view text, std::string& to) {
  constexpr std::string_view marks = "\"\\/bfnrt";
  constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
  if (const auto unit = jsonUnit(text)) {
    const auto second = jsonUnit(text.substr(6));
    if (*unit >= 0xD800 && *unit < 0xDC00 && second && *second >= 0xDC00 && *second < 0xE000) {
      append(0x10000 + ((*unit - 0xD800) << 10) + (*second - 0xDC00), to);
      return 12;
    }
    return append(unit, to) ? 6 : 0;
  }
  const auto mark = text.size() < 2 ? std::string_view::npos : marks.find(text[1]);
  if (mark == std::string_view::npos) return 0;
  to += meanings[mark];
  return 2;
}

std::size_t readXML(std::string_view text, std::string& to) {
  constexpr std::array<std::pair<std::string_view, char>, 5> named = {
      {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
  const auto end = text.substr(0, 12).find(';');
  if (end == std::string_view::npos) return 0;
  auto name = text.substr(1, end - 1);
  for (const auto& [entity, character] : named) {
    if (name != entity) continue;
    to += character;
    return end + 1;
  }
  if (!name.starts_with('#')) return 0;
  name.remove_prefix(1);
  const bool isHex = name.starts_with('x');
  return append(number(name.substr(isHex ? 1 : 0), isHex ? 16 : 10), to) ? end + 1 : 0;
}

std::size_t readPercent(std::string_view text, std::string& to) {
  const auto byte = text.size() < 3 ? std::nullopt : number(text.substr(1, 2), 16);
  if (!byte) return 0;
  to += static_cast<char>(*byte);
  return 3;
}

}  // namespace

DecodedText DecodedText::fromJSON(std::string_view text) { return from(text, '\\', readJSON); }
DecodedText DecodedText::fromXML(std::string_view text) { return from(text, '&', readXML); }
DecodedText DecodedText::fromPercent(std::string_view text) { return from(text, '%', readPercent); }

DecodedText DecodedText::from(std::string_view text, char mark, Read read) {
  DecodedText decoded;
  decoded.text_.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const auto next = std::min(text.find(mark, at), text.size());
    decoded.text_ += text.substr(at, next - at);
    at = next;
    if (at == text.size()) break;
    const auto begin = decoded.text_.size();
    if (const auto length = read(text.substr(at), decoded.text_)) {
      decoded.escapes_.push_back({begin, decoded.text_.size(), at, at + length});
      at += length;
    } else {
      decoded.text_ += text[at++];
    }
  }
  return decoded;
}

std::pair<std::size_t, std::size_t> DecodedText::source(
    std::pair<std::size_t, std::size_t> range) const {
  return {sourceOf(range.first, false), sourceOf(range.second, true)};
}

std::size_t DecodedText::sourceOf(std::size_t offset, bool isEnd) const {
  // The first escape that lies wholly behind the offset, and the one before it.
  const auto next = std::partition_point(
      escapes_.begin(), escapes_.end(),
      [&](const Escape& escape) { return isEnd ? escape.begin < offset : escape.begin <= offset; });
  if (next == escapes_.begin()) return offset;
  const Escape& escape = *std::prev(next);
  if (isEnd && offset <= escape.end) return escape.sourceEnd;
  if (!isEnd && offset < escape.end) return escape.sourceBegin;
  return escape.sourceEnd + (offset - escape.end);
}

}  // namespace xel::simulation
