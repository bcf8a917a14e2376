#include "simulation/trace/Replacements.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <utility>

namespace xel::simulation {
namespace {

constexpr std::string_view word = "redacted-";
constexpr std::string_view uuidStart = "00000000-0000-4000-8000-";

bool isReplacement(std::string_view text) {
  if (text.starts_with(uuidStart)) return true;
  return text.starts_with(word) && text.size() > word.size() &&
         text.find_first_not_of("0123456789", word.size()) == std::string_view::npos;
}

}  // namespace

bool Replacements::isUUID(std::string_view text) {
  constexpr std::string_view form = "00000000-0000-0000-0000-000000000000";
  return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char c, char pattern) {
    return pattern == '-' ? c == '-' : std::isxdigit(static_cast<unsigned char>(c)) != 0;
  });
}

std::string Replacements::of(std::string_view value) {
  if (isReplacement(value)) return std::string(value);
  std::string key(value);
  if (isUUID(value)) {  // Its case does not matter.
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return std::tolower(c); });
  }
  const auto [entry, isNew] = replacements_.try_emplace(std::move(key));
  if (isNew && isUUID(value)) {
    std::array<char, 13> digits;
    std::snprintf(digits.data(), digits.size(), "%012zu", replacements_.size() % 1'000'000'000'000);
    entry->second = std::string(uuidStart) + digits.data();
  } else if (isNew) {
    entry->second = std::string(word) + std::to_string(replacements_.size());
  }
  return entry->second;
}

}  // namespace xel::simulation
