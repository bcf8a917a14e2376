#include "platform/URL.h"

#include <algorithm>
#include <memory>

#include <uriparser/Uri.h>

namespace xel {
namespace {

constexpr std::string_view alwaysLiteral =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$'()*+,;:@/?";

int hexDigit(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string percentDecoded(std::string_view encoded) {
  std::string decoded;
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    if (encoded[i] == '%' && i + 2 < encoded.size()) {
      const int high = hexDigit(encoded[i + 1]);
      const int low = hexDigit(encoded[i + 2]);
      if (high >= 0 && low >= 0) {
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
        continue;
      }
    }
    decoded += encoded[i];
  }
  return decoded;
}

void appendEncoded(std::string& out, std::string_view text, bool literalEquals) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  for (const char c : text) {
    if (alwaysLiteral.find(c) != std::string_view::npos || (c == '=' && literalEquals)) {
      out += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      out += '%';
      out += digits[byte >> 4];
      out += digits[byte & 15];
    }
  }
}

/// The text with the brackets behind the authority replaced by a character that may stand there.
std::string withoutMacroBrackets(std::string text) {
  const std::size_t slashes = text.find("://");
  const std::size_t authority = slashes == std::string::npos ? 0 : slashes + 3;
  const std::size_t behind = text.find_first_of("/?#", authority);
  if (behind == std::string::npos) return text;
  std::replace_if(
      text.begin() + static_cast<std::ptrdiff_t>(behind), text.end(),
      [](char c) { return c == '[' || c == ']'; }, '_');
  return text;
}

}  // namespace

std::vector<QueryItem> parseQuery(std::string_view encoded) {
  std::vector<QueryItem> items;
  while (!encoded.empty()) {
    const std::size_t end = std::min(encoded.find('&'), encoded.size());
    const std::string_view piece = encoded.substr(0, end);
    const std::size_t equals = piece.find('=');
    QueryItem item{percentDecoded(piece.substr(0, equals)), std::nullopt};
    if (equals != std::string_view::npos) item.value = percentDecoded(piece.substr(equals + 1));
    items.push_back(std::move(item));
    if (end == encoded.size()) break;
    encoded.remove_prefix(end + 1);
    if (encoded.empty()) items.push_back({});
  }
  return items;
}

std::string writeQuery(const std::vector<QueryItem>& items) {
  std::string query;
  for (const QueryItem& item : items) {
    if (&item != &items.front()) query += '&';
    appendEncoded(query, item.name, false);
    if (item.value) {
      query += '=';
      appendEncoded(query, *item.value, true);
    }
  }
  return query;
}

std::optional<URL> URL::parse(std::string text, Brackets brackets) {
  const std::string parsed = brackets == Brackets::tolerated ? withoutMacroBrackets(text) : text;
  UriUriA parts;
  const char* errorPosition = nullptr;
  const char* const begin = parsed.data();
  if (uriParseSingleUriExA(&parts, begin, begin + parsed.size(), &errorPosition) != URI_SUCCESS) {
    return std::nullopt;
  }
  const std::unique_ptr<UriUriA, decltype(&uriFreeUriMembersA)> release(&parts,
                                                                        &uriFreeUriMembersA);
  const auto range = [begin](const UriTextRangeA& part) -> std::optional<Range> {
    if (part.first == nullptr) return std::nullopt;
    // uriparser marks an empty component by a place of its own, outside of the text.
    if (part.first == part.afterLast) return Range{};
    return Range{static_cast<std::size_t>(part.first - begin),
                 static_cast<std::size_t>(part.afterLast - part.first)};
  };
  URL url;
  url.scheme_ = range(parts.scheme).value_or(Range{});
  url.host_ = range(parts.hostText).value_or(Range{});
  url.query_ = range(parts.query);
  if (url.query_ && url.query_->length == 0) {
    url.query_->begin = parsed.find('?') + 1;
  }
  url.text_ = std::move(text);
  return url;
}

std::optional<std::string_view> URL::query() const noexcept {
  if (!query_) return std::nullopt;
  return view(*query_);
}

std::string URL::textWithQuery(std::string_view encoded) const {
  std::string changed = text_;
  changed.replace(query_->begin, query_->length, encoded);
  return changed;
}

}  // namespace xel
