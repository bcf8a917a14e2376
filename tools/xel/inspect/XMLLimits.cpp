#include "inspect/XMLLimits.h"

#include <algorithm>
#include <utility>

namespace xel::inspect {
namespace {

/// Behind a section in which no tag stands; the same position where a tag stands.
std::size_t behindSection(std::string_view text, std::size_t position) {
  constexpr std::pair<std::string_view, std::string_view> sections[] = {
      {"<![CDATA[", "]]>"}, {"<!--", "-->"}, {"<?", "?>"}};
  for (const auto& [begin, end] : sections) {
    if (text.substr(position).starts_with(begin))
      return std::min(text.find(end, position), text.size());
  }
  return position;
}

bool hasTooManyAttributes(std::string_view tag) {
  int attributes = 0;
  char quote = 0;
  for (const char c : tag) {
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      break;
    } else if (c == '=') {
      ++attributes;
    }
  }
  return attributes > maxAttributes;
}

}  // namespace

std::size_t tagOverLimit(std::string_view text) {
  auto position = text.find('<');
  while (position != std::string_view::npos) {
    const auto behind = behindSection(text, position);
    const auto next = text.find('<', std::max(behind, position + 1));
    if (behind == position && hasTooManyAttributes(text.substr(position, next - position))) {
      return position;
    }
    position = next;
  }
  return text.size();
}

}  // namespace xel::inspect
