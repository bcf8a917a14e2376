#include "simulation/trace/URLRedactor.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "simulation/trace/DecodedText.h"

namespace xel::simulation {
namespace {

/// The parameters that the library adds; what they hold are names and versions.
bool isOwnParameter(std::string_view name) { return name == "sdkv" || name == "ssss"; }

/// One character of a text, and how it is written there.
struct Unit {
  char character = 0;
  std::size_t length = 0;
  bool isPercent = false;
};

bool isHexadecimal(std::string_view text) {
  return text.size() == 2 && std::isxdigit(static_cast<unsigned char>(text[0])) != 0 &&
         std::isxdigit(static_cast<unsigned char>(text[1])) != 0;
}

/// "%2F", also escaped again and again: "%252F".
Unit percentUnit(std::string_view text) {
  std::size_t at = 1;
  while (text.substr(at, 2) == "25" && isHexadecimal(text.substr(at + 2, 2))) at += 2;
  const auto decoded = DecodedText::fromPercent("%" + std::string(text.substr(at, 2)));
  if (!decoded.hasEscapes()) return {'%', 1, false};
  return {decoded.text()[0], at + 2, true};
}

Unit escapeUnit(std::string_view escape, DecodedText (*decode)(std::string_view)) {
  const auto decoded = decode(escape);
  const auto [begin, end] = decoded.source({0, 1});
  if (!decoded.hasEscapes() || end != escape.size()) return {escape[begin], 1, false};
  // Beyond ASCII it is a letter like any other.
  return {decoded.text().size() == 1 ? decoded.text()[0] : '\x80', escape.size(), false};
}

Unit unitAt(std::string_view text, std::size_t at) {
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

bool isWordCharacter(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 || std::isalnum(byte) != 0 ||
         std::string_view("-._~").find(c) != std::string_view::npos;
}

bool endsURL(char c) {
  return static_cast<unsigned char>(c) <= ' ' ||
         std::string_view("\"<>\x7F").find(c) != std::string_view::npos;
}

/// The length of what begins there as the text does; 0 where something else does.
std::size_t lengthOf(std::string_view part, std::string_view text, std::size_t at) {
  const auto begin = at;
  for (const char wanted : part) {
    const auto unit = unitAt(text, at);
    if (unit.length == 0 || unit.character != wanted) return 0;
    at += unit.length;
  }
  return at - begin;
}

/// The length of a macro, brackets included; 0 where there is none.
std::size_t macroLength(std::string_view text, std::size_t at) {
  const auto begin = at;
  for (auto unit = unitAt(text, at); unit.length > 0; unit = unitAt(text, at)) {
    at += unit.length;
    if (unit.character == ']') return at - begin;
    const bool isName = isWordCharacter(unit.character) || unit.character == ':';
    if (!isName && at - begin > unit.length) return 0;
  }
  return 0;
}

}  // namespace

/// One way through a text.
class URLRedactor::Scan {
 public:
  Scan(URLRedactor& redactor, std::string_view text) : redactor_(redactor), text_(text) {}

  std::string text() {
    while (at_ < text_.size()) {
      copy(std::min(text_.find_first_of("/\\%", at_), text_.size()) - at_);
      const auto slashes = lengthOf("//", text_, at_);
      if (slashes == 0) {
        copy(std::min<std::size_t>(1, text_.size() - at_));
        continue;
      }
      const bool isEscaped = text_[at_] == '%';
      copy(slashes);
      url(State::address, isEscaped);
    }
    return std::move(out_);
  }

  std::string wholeURL() {
    copy(std::min(text_.find_first_not_of(" \t\r\n"), text_.size()) - at_);
    auto scheme = at_;
    while (scheme < text_.size() && std::isalnum(static_cast<unsigned char>(text_[scheme])) != 0) {
      ++scheme;
    }
    const bool isAbsolute =
        text_.substr(scheme).starts_with("://") || text_.substr(at_).starts_with("//");
    if (!isAbsolute) url(State::name, false);
    return text();
  }

 private:
  enum class State { address, name, value };

  void copy(std::size_t length) {
    out_ += text_.substr(at_, length);
    at_ += length;
  }

  /// Up to the end of the URL.
  /// @param isEscaped whether the URL itself stands in the value of a query or a form.
  void url(State state, bool isEscaped) {
    state_ = state;
    isWithin_ = isEscaped;
    name_.clear();
    wordBegin_ = at_;
    for (auto unit = unitAt(text_, at_); unit.length > 0; unit = unitAt(text_, at_)) {
      if ((!unit.isPercent || isEscaped) && endsURL(unit.character)) break;
      if (isEscaped && !unit.isPercent && unit.character == '&') break;
      if (state_ == State::value && isWordCharacter(unit.character)) {
        word_ += unit.character;
        at_ += unit.length;
        continue;
      }
      outsideWord(unit);
      wordBegin_ = at_;
    }
    endWord();
  }

  void outsideWord(const Unit& unit) {
    const bool isSeparator = unit.character == '&' && (isWithin_ || !unit.isPercent);
    if (unit.character == '[') {
      endWord();
      if (const auto length = macroLength(text_, at_)) return copy(length);
    } else if (const auto length = state_ == State::value ? lengthOf("://", text_, at_) : 0) {
      // What was read is the scheme of a URL within.
      keepWord();
      isWithin_ = true;
      state_ = State::address;
      return copy(length);
    }
    endWord();
    if (unit.character == '#' || (unit.character == '?' && state_ == State::address) ||
        (isSeparator && (state_ != State::address || isWithin_))) {
      state_ = State::name;
      name_.clear();
      if (!unit.isPercent && unit.character == '&') isWithin_ = false;
    } else if (unit.character == '=' && state_ == State::name) {
      state_ = State::value;
    } else if (state_ == State::name) {
      name_ += unit.character;
    }
    copy(unit.length);
  }

  void keepWord() {
    out_ += text_.substr(wordBegin_, at_ - wordBegin_);
    word_.clear();
  }

  void endWord() {
    if (word_.empty()) return;
    if (isOwnParameter(name_)) return keepWord();
    out_ += redactor_.replacement(word_);
    word_.clear();
  }

  URLRedactor& redactor_;
  const std::string_view text_;
  std::string out_;
  std::size_t at_ = 0;

  State state_ = State::address;
  /// Whether an escaped "&" separates, since the URL stands within another's query.
  bool isWithin_ = false;
  std::string name_;
  std::string word_;
  std::size_t wordBegin_ = 0;
};

void URLRedactor::keep(std::string text) {
  if (!text.empty()) kept_.push_back(std::move(text));
}

std::string URLRedactor::inText(std::string_view text) { return Scan(*this, text).text(); }
std::string URLRedactor::inURL(std::string_view text) { return Scan(*this, text).wholeURL(); }

std::string URLRedactor::replacement(std::string_view word) {
  if (word.empty()) return {};
  for (const std::string& kept : kept_) {
    const auto at = word.find(kept);
    if (at == std::string_view::npos) continue;
    return replacement(word.substr(0, at)) + kept + replacement(word.substr(at + kept.size()));
  }
  return replacements_.of(word);
}

}  // namespace xel::simulation
