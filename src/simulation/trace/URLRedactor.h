#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulation/trace/Replacements.h"

namespace xel::simulation {

/// Replaces the values in URLs, word by word: those of queries, fragments and path parameters, and
/// users. Leaves everything that gives a URL its form: names, punctuation, escapes, macros such as
/// "[TIMESTAMP]", and the addresses of URLs within. So a client does the same with the URL as
/// before. URLs are found in any text, also where it is JSON, XML, or escaped once for a query.
class URLRedactor {
 public:
  explicit URLRedactor(Replacements& replacements) : replacements_(replacements) {}

  /// A text that stays, because the library writes it into URLs itself or looks for it there.
  void keep(std::string text);

  std::string inText(std::string_view text);
  /// The text is a URL, or the rest of one that begins with names and values.
  std::string inURL(std::string_view text);

 private:
  class Scan;

  std::string replacement(std::string_view word);

  Replacements& replacements_;
  std::vector<std::string> kept_;
};

}  // namespace xel::simulation
