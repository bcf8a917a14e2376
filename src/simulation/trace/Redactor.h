#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulation/trace/Replacements.h"
#include "simulation/trace/URLRedactor.h"

namespace xel::simulation {

/// Takes out of a trace's texts what nobody else may see, so that what the library makes of one
/// redacted text is again what another one was redacted to.
class Redactor {
 public:
  /// @param redactURLs whether the query values of all URLs are replaced too.
  explicit Redactor(bool redactURLs) : redactURLs_(redactURLs), urls_(replacements_) {}

  /// Replaces the value from now on: wherever it occurs, also where it is escaped for JSON, XML or
  /// URLs, or for several of them in any order, up to four times in all. One with fewer than four
  /// characters, or that is a word of the protocol, is replaced where it is the whole of a text or
  /// of a query value. Empty, or a UUID of zeros: no secret.
  void addSecret(const std::string& value);
  /// Makes secrets of the values of parameters, such as "user=42&section=news": under their own
  /// names always; anywhere those that look like identifiers; the others as whole words, but for
  /// those with fewer than four characters, numbers with fewer than six digits, and the words of
  /// the protocol.
  void addParameters(std::string_view parameters);
  /// A text that stays in URLs. See `URLRedactor`.
  void keepInURLs(std::string text) { urls_.keep(std::move(text)); }

  std::string text(std::string_view text);
  /// A text that is a URL, or the rest of one.
  std::string url(std::string_view text);
  /// The value of a header. Of "Authorization" only the secrets go, if there are any in it.
  std::string headerValue(std::string_view name, std::string_view value);

 private:
  enum class Where { anywhere, wholeWord, wholeNumber, wholeValue };
  struct Secret {
    std::string text;
    std::string replacement;
    Where where;
  };
  struct Found {
    std::size_t begin;
    std::size_t end;
    const Secret* secret;
  };
  using Range = std::pair<std::size_t, std::size_t>;

  void addSecret(const std::string& value, Where where);
  void add(std::string text, std::string replacement, Where where);
  static bool isWhole(std::string_view text, Range range, const Secret& secret);
  /// The number in a JSON document that the range is the digits of; absent if it is none.
  static std::optional<Range> numberAround(std::string_view text, Range range);
  std::string replaceSecrets(std::string_view text) const;

  const bool redactURLs_;
  Replacements replacements_;
  URLRedactor urls_;
  /// The longest first.
  std::vector<Secret> secrets_;
  std::set<std::string> known_;
};

}  // namespace xel::simulation
