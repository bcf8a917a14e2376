#include "simulation/trace/URLRedactor.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "simulation/trace/TextUnit.h"

namespace xel::simulation {
namespace {

/// The parameters that the library adds; what they hold are names and versions.
bool isOwnParameter(std::string_view name) { return name == "sdkv" || name == "ssss"; }

bool isOneOf(char c, std::string_view characters) {
  return characters.find(c) != std::string_view::npos;
}

bool isWordCharacter(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 || std::isalnum(byte) != 0 || isOneOf(c, "-._~");
}

/// A blank ends no URL: what stands behind it may belong to one that is written badly.
bool endsURL(char c) { return static_cast<unsigned char>(c) < ' ' || isOneOf(c, "\"<>\x7F"); }

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
      url(true, isEscaped);
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
    // With a blank in it, it is neither the one nor the other.
    const auto end = text_.find_last_not_of(" \t\r\n") + 1;
    const bool hasBlank = text_.substr(0, end).find(' ', at_) != std::string_view::npos;
    if (!isAbsolute && !hasBlank) url(false, false);
    return text();
  }

 private:
  enum class State { user, address, name, value };

  /// Whether one of the characters comes before the URL, or this part of it, ends.
  bool comesBefore(char wanted, std::string_view ends) const {
    for (auto at = at_;;) {
      const auto unit = unitAt(text_, at);
      if (unit.length > 0 && unit.character == wanted) return true;
      if (unit.length == 0 || endsURL(unit.character) || endsQuoted(at)) return false;
      if (isOneOf(unit.character, ends)) return false;
      at += unit.length;
    }
  }

  /// Whether an attribute in single quotes ends there; they may stand within a URL as well.
  bool endsQuoted(std::size_t at) const {
    if (lengthOf("'", text_, at) == 0) return false;
    at += lengthOf("'", text_, at);
    return lengthOf(" ", text_, at) > 0 || lengthOf(">", text_, at) > 0 ||
           lengthOf("/>", text_, at) > 0;
  }

  void beginAddress() {
    // A user, perhaps with a password.
    state_ = comesBefore('@', " /?#") ? State::user : State::address;
  }

  /// What has no name is a value.
  void beginParameter() {
    name_.clear();
    state_ = comesBefore('=', isInPath_ ? "&#;/?" : "&#") ? State::name : State::value;
  }

  void copy(std::size_t length) {
    out_ += text_.substr(at_, length);
    at_ += length;
  }

  /// Up to the end of the URL.
  /// @param isEscaped whether the URL itself stands in the value of a query or a form.
  void url(bool isAddress, bool isEscaped) {
    isWithin_ = isEscaped;
    isInPath_ = false;
    if (isAddress) {
      beginAddress();
    } else {
      beginParameter();
    }
    wordBegin_ = at_;
    for (auto unit = unitAt(text_, at_); unit.length > 0; unit = unitAt(text_, at_)) {
      if ((!unit.isPercent || isEscaped) && (endsURL(unit.character) || endsQuoted(at_))) break;
      if (isEscaped && !unit.isPercent && unit.character == '&') break;
      const bool isReplaced = state_ == State::user || state_ == State::value;
      if (isReplaced && isWordCharacter(unit.character)) {
        word_ += unit.character;
        at_ += unit.length;
        continue;
      }
      outsideWord(unit);
      wordBegin_ = at_;
    }
    endWord();
  }

  void outsideWord(const TextUnit& unit) {
    if (unit.character == '[') {
      endWord();
      if (const auto length = macroLength(text_, at_)) return copy(length);
    } else if (const auto length = state_ == State::value ? lengthOf("://", text_, at_) : 0) {
      // What was read is the scheme of a URL within.
      keepWord();
      isWithin_ = true;
      isInPath_ = false;
      copy(length);
      return beginAddress();
    }
    endWord();
    copy(unit.length);
    move(unit);
  }

  /// Into another part of the URL, where one begins behind the character.
  void move(const TextUnit& unit) {
    const bool isPath = state_ == State::address || isInPath_;
    const bool isSeparator = unit.character == '&' && (isWithin_ || !unit.isPercent);
    if (state_ == State::user) {
      if (unit.character == '@') state_ = State::address;
    } else if (unit.character == '#' || (unit.character == '?' && isPath) ||
               (isSeparator && (!isPath || isWithin_))) {
      isInPath_ = false;
      if (!unit.isPercent && unit.character == '&') isWithin_ = false;
      beginParameter();
    } else if (unit.character == ';' && isPath) {
      isInPath_ = true;
      beginParameter();
    } else if (unit.character == '/' && isInPath_) {
      isInPath_ = false;
      state_ = State::address;
    } else if (unit.character == '=' && state_ == State::name) {
      state_ = State::value;
    } else if (state_ == State::name) {
      name_ += unit.character;
    }
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
  /// Whether in a parameter of the path, behind a ";".
  bool isInPath_ = false;
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
