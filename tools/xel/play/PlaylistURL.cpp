#include "play/PlaylistURL.h"

#include <memory>

#include <uriparser/Uri.h>

namespace xel {
namespace {

/// Refers to the text that it was parsed from.
class ParsedURL {
 public:
  ParsedURL() = default;
  explicit ParsedURL(const std::string& text)
      : isValid_(uriParseSingleUriA(&uri_, text.c_str(), nullptr) == URI_SUCCESS) {}
  ~ParsedURL() { uriFreeUriMembersA(&uri_); }
  ParsedURL(const ParsedURL&) = delete;
  ParsedURL& operator=(const ParsedURL&) = delete;

  bool isValid() const { return isValid_; }
  UriUriA* get() { return &uri_; }

 private:
  UriUriA uri_ = {};
  bool isValid_ = false;
};

}  // namespace

std::optional<std::string> resolveURL(const std::string& base, const std::string& reference) {
  ParsedURL baseURL(base);
  ParsedURL referenceURL(reference);
  ParsedURL resolved;
  if (!baseURL.isValid() || !referenceURL.isValid() ||
      uriAddBaseUriA(resolved.get(), referenceURL.get(), baseURL.get()) != URI_SUCCESS) {
    return std::nullopt;
  }
  int length = 0;
  if (uriToStringCharsRequiredA(resolved.get(), &length) != URI_SUCCESS) return std::nullopt;
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  if (uriToStringA(text.data(), resolved.get(), length + 1, nullptr) != URI_SUCCESS) {
    return std::nullopt;
  }
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace xel
