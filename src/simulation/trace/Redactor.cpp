#include "simulation/trace/Redactor.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>

#include "simulation/trace/DecodedText.h"
#include "simulation/trace/ProtocolWords.h"

namespace xel::simulation {
namespace {

constexpr std::size_t shortestInWords = 4;
constexpr std::size_t shortestIdentifier = 8;
constexpr std::size_t fewestDigits = 6;
constexpr int escapeRounds = 4;

std::string mapped(std::string text, int (*map)(int)) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [map](unsigned char c) { return static_cast<char>(map(c)); });
  return text;
}

std::string without(std::string text, char character) {
  std::erase(text, character);
  return text;
}

bool isDigits(std::string_view text) {
  return text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isWordCharacter(char c) {
  return static_cast<unsigned char>(c) >= 0x80 ||
         std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool isOneOf(char c, std::string_view characters) {
  return characters.find(c) != std::string_view::npos;
}

std::size_t find(std::string_view text, std::string_view part, std::size_t from) {
  const auto* found = memmem(text.data() + from, text.size() - from, part.data(), part.size());
  if (!found) return std::string_view::npos;
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

}  // namespace

void Redactor::addSecret(const std::string& value) {
  const bool isCommon = value.size() < shortestInWords || isProtocolWord(value);
  addSecret(value, isCommon          ? Where::wholeValue
                   : isDigits(value) ? Where::wholeNumber
                                     : Where::anywhere);
}

void Redactor::addSecret(const std::string& value, Where where) {
  if (value.find_first_not_of("0-") == std::string::npos) return;
  if (!known_.insert(value).second) return;
  const auto replacement = replacements_.of(value);
  if (Replacements::isUUID(value)) {
    for (const auto& form : {mapped(value, std::tolower), mapped(value, std::toupper), value}) {
      add(form, replacement, Where::anywhere);
      add(without(form, '-'), without(replacement, '-'), Where::anywhere);
    }
    return;
  }
  add(value, replacement, where);
  auto asForm = value;
  std::replace(asForm.begin(), asForm.end(), ' ', '+');
  if (asForm != value) add(asForm, replacement, where);
  // What looks like an escape in it is read as one where others are.
  for (const auto decode :
       {DecodedText::fromJSON, DecodedText::fromXML, DecodedText::fromPercent}) {
    const auto decoded = decode(value);
    if (decoded.hasEscapes()) add(decoded.text(), replacement, where);
  }
}

void Redactor::addParameters(std::string_view parameters) {
  while (!parameters.empty()) {
    const auto end = std::min(parameters.find('&'), parameters.size());
    const std::string piece(parameters.substr(0, end));
    parameters.remove_prefix(std::min(end + 1, parameters.size()));
    const auto equals = piece.find('=');
    const auto value = piece.substr(equals == std::string::npos ? 0 : equals + 1);
    if (value.empty()) continue;
    if (equals != std::string::npos && !known_.contains(piece)) {
      add(piece, piece.substr(0, equals + 1) + replacements_.of(value), Where::wholeWord);
    }
    const auto isIdentifier = value.size() >= shortestIdentifier &&
                              value.find_first_of("0123456789") != std::string::npos;
    if (isProtocolWord(value)) continue;
    if (isDigits(value)) {
      if (value.size() >= fewestDigits) addSecret(value);
    } else if (isIdentifier || value.find('@') != std::string::npos) {
      addSecret(value);
    } else if (value.size() >= shortestInWords) {
      addSecret(value, Where::wholeWord);
    }
  }
}

void Redactor::add(std::string text, std::string replacement, Where where) {
  const auto place = std::find_if(secrets_.begin(), secrets_.end(), [&](const Secret& other) {
    return other.text.size() < text.size();
  });
  secrets_.insert(place, {std::move(text), std::move(replacement), where});
}

std::string Redactor::text(std::string_view text) {
  auto redacted = replaceSecrets(text);
  return redactURLs_ ? urls_.inText(redacted) : redacted;
}

std::string Redactor::url(std::string_view text) {
  auto redacted = replaceSecrets(text);
  return redactURLs_ ? urls_.inURL(redacted) : redacted;
}

std::string Redactor::headerValue(std::string_view name, std::string_view value) {
  const auto header = mapped(std::string(name), std::tolower);
  if (value.empty()) return {};
  if (header == "cookie" || header == "set-cookie") return replacements_.of(value);
  auto redacted = text(value);
  if (header.ends_with("authorization") && redacted == value) return replacements_.of(value);
  return redacted;
}

/// Whether the secret stands for itself there, as far as it must.
bool Redactor::isWhole(std::string_view text, Range range, const Secret& secret) {
  const bool isFirst = range.first == 0;
  const bool isLast = range.second == text.size();
  const char before = isFirst ? ' ' : text[range.first - 1];
  const char after = isLast ? ' ' : text[range.second];
  switch (secret.where) {
    case Where::anywhere:
      return true;
    case Where::wholeWord:
      return !isWordCharacter(before) && !isWordCharacter(after);
    case Where::wholeNumber: {
      if (isDigit(before) || isDigit(after)) return false;
      if ((before != '.' && after != '.') || !numberAround(text, range)) return true;
      // A fraction of zeros makes no other number.
      const auto fraction = std::min(text.find_first_not_of('0', range.second + 1), text.size());
      return before != '.' && (fraction == text.size() || !isDigit(text[fraction]));
    }
    case Where::wholeValue:
      break;
  }
  const bool isName = after == '"' && text.substr(range.second + 1).starts_with(':');
  return (isFirst || isOneOf(before, "=\"")) && (isLast || isOneOf(after, "&#\"")) && !isName;
}

std::optional<Redactor::Range> Redactor::numberAround(std::string_view text, Range range) {
  if (text.empty() || !isOneOf(text.front(), "{[")) return std::nullopt;
  const auto [first, last] =
      std::pair(text.substr(0, range.first).find_last_not_of("-+.eE0123456789"),
                text.find_first_not_of("-+.eE0123456789", range.second));
  if (first == std::string_view::npos || last == std::string_view::npos) return std::nullopt;
  const auto before = text.find_last_not_of(" \t\r\n", first);
  const auto after = text.find_first_not_of(" \t\r\n", last);
  if (before == std::string_view::npos || !isOneOf(text[before], ":[,") ||
      after == std::string_view::npos || !isOneOf(text[after], ",]}")) {
    return std::nullopt;
  }
  return Range(first + 1, last);
}

std::string Redactor::replaceSecrets(std::string_view text) const {
  // As it is, then with the escapes of JSON, XML and URLs read, one inside the other, and again.
  std::vector<DecodedText> layers;
  std::vector<Found> found;
  const auto search = [&](std::string_view decoded) {
    for (const Secret& secret : secrets_) {
      for (std::size_t at = 0; (at = find(decoded, secret.text, at)) != std::string_view::npos;) {
        Range range = {at, at + secret.text.size()};
        at = range.second;
        if (!isWhole(decoded, range, secret)) continue;
        for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
          range = layer->source(range);
        }
        found.push_back({range.first, range.second, &secret});
      }
    }
  };
  search(text);
  bool hasMore = true;
  for (int round = 0; hasMore && round < escapeRounds; ++round) {
    hasMore = false;
    for (const auto decode :
         {DecodedText::fromJSON, DecodedText::fromXML, DecodedText::fromPercent}) {
      auto decoded = decode(layers.empty() ? text : std::string_view(layers.back().text()));
      if (!decoded.hasEscapes()) continue;
      hasMore = true;
      layers.push_back(std::move(decoded));
      search(layers.back().text());
    }
  }
  if (found.empty()) return std::string(text);

  // Where several overlap, the outermost counts, and of one that goes on behind it no rest stays.
  std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
    return a.begin != b.begin ? a.begin < b.begin : a.end > b.end;
  });
  std::string redacted;
  std::size_t done = 0;
  for (const auto& [begin, end, secret] : found) {
    if (begin < done) {
      done = std::max(done, end);
      continue;
    }
    const auto number =
        secret->where == Where::wholeNumber ? numberAround(text, {begin, end}) : std::nullopt;
    // The number may begin within what is replaced already.
    const auto from = std::max(done, number ? number->first : begin);
    redacted += text.substr(done, from - done);
    redacted += number ? '"' + secret->replacement + '"' : secret->replacement;
    done = number ? number->second : end;
  }
  redacted += text.substr(done);
  return redacted;
}

}  // namespace xel::simulation
