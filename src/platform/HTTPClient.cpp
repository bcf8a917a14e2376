#include "xel/platform/HTTPClient.h"

#include <algorithm>

#include "platform/Text.h"
#include "platform/URL.h"

namespace xel {
namespace {

bool isControl(char c) noexcept {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

/// A token of RFC 9110 section 5.6.2.
bool isToken(std::string_view text) noexcept {
  constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
  return !text.empty() && std::all_of(text.begin(), text.end(), [marks](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           marks.find(c) != std::string_view::npos;
  });
}

std::optional<std::string> urlRefusal(const std::string& text) {
  if (text.empty()) return "The URL is empty.";
  const std::optional<URL> url = URL::parse(text, URL::Brackets::tolerated);
  if (!url) return "The URL is not valid: a character stands where none may, or must be escaped.";
  const std::string scheme = lowercased(url->scheme());
  if (scheme != "http" && scheme != "https") return "The URL is neither http nor https.";
  if (url->host().empty()) return "The URL names no host.";
  return std::nullopt;
}

}  // namespace

HTTPClient::~HTTPClient() = default;

std::optional<std::string_view> HTTPRequest::header(std::string_view name) const {
  const std::string wanted = lowercased(name);
  for (const HTTPHeader& field : headers) {
    if (lowercased(field.name) == wanted) return field.value;
  }
  return std::nullopt;
}

std::optional<std::string> HTTPRequest::refusal() const {
  if (auto reason = urlRefusal(url)) return reason;
  if (!isToken(method)) return "The method is not a token.";
  for (const HTTPHeader& field : headers) {
    if (!isToken(field.name)) return "The name of a header is not a token.";
    if (std::any_of(field.value.begin(), field.value.end(), isControl)) {
      return "The header " + field.name + " holds a control character.";
    }
  }
  return std::nullopt;
}

std::shared_ptr<const Error> makeTransferError(TransferError code, std::string description) {
  return std::make_shared<const Error>(
      Error{std::string(transferErrorDomain), static_cast<int>(code), std::move(description), {}});
}

}  // namespace xel
