#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace xel {

/// One piece of a URL's query, percent-decoded; "+" stays a plus.
struct QueryItem {
  std::string name;
  /// Absent when the piece has no "=".
  std::optional<std::string> value;
};

/// The items of an encoded query, in order; none for an empty query.
std::vector<QueryItem> parseQuery(std::string_view encoded);

/// The items as an encoded query. What RFC 3986 lets stand in a query stays literal, but for the
/// "&" and, in names, the "="; everything else becomes upper-case percent escapes.
std::string writeQuery(const std::vector<QueryItem>& items);

/// A URL or relative reference that is valid by RFC 3986, kept as it is written.
class URL {
 public:
  enum class Brackets {
    /// As RFC 3986 has it: only around an IP literal.
    strict,
    /// Also in path, query and fragment, where tracking URLs carry macros.
    tolerated,
  };

  /// Absent when the text is not valid.
  static std::optional<URL> parse(std::string text, Brackets brackets = Brackets::strict);

  const std::string& text() const noexcept { return text_; }
  /// As written; empty for a relative reference.
  std::string_view scheme() const noexcept { return view(scheme_); }
  std::string_view host() const noexcept { return view(host_); }
  /// Still encoded, without the "?"; absent when there is no "?".
  std::optional<std::string_view> query() const noexcept;
  /// The URL with another query in the place of the one it has, which must be present.
  std::string textWithQuery(std::string_view encoded) const;

 private:
  struct Range {
    std::size_t begin = 0;
    std::size_t length = 0;
  };
  URL() = default;
  std::string_view view(Range range) const noexcept {
    return std::string_view(text_).substr(range.begin, range.length);
  }

  std::string text_;
  Range scheme_;
  Range host_;
  std::optional<Range> query_;
};

}  // namespace xel
