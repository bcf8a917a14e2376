#include "protocol/XELStreamInitResponse.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Text.h"
#include "platform/URL.h"

namespace {

/// The query items of the suffix; none when it cannot stand in a URL as it is.
std::vector<xel::QueryItem> suffixItems(std::string_view suffix) {
  const auto url = xel::URL::parse("http://suffix.invalid/path?" + std::string(suffix));
  return url ? xel::parseQuery(url->query().value_or("")) : std::vector<xel::QueryItem>();
}

std::optional<std::string> manifestWithSuffix(std::string_view manifest, std::string_view suffix) {
  const auto url = xel::URL::parse(std::string(manifest));
  if (!url) return std::nullopt;
  std::vector<xel::QueryItem> items = xel::parseQuery(url->query().value_or(""));
  if (items.empty()) return url->text() + '?' + std::string(suffix);

  const std::vector<xel::QueryItem> overriding = suffixItems(suffix);
  std::erase_if(items, [&](const xel::QueryItem& item) {
    return std::any_of(overriding.begin(), overriding.end(),
                       [&](const xel::QueryItem& other) { return other.name == item.name; });
  });
  return url->textWithQuery(xel::writeQuery(items)) + '&' + std::string(suffix);
}

}  // namespace

bool XELStreamInitResponse::isValidStreamResponse(const xel::JSONValue& response) noexcept {
  return response.has(streamIDKey) && response.has(streamManifestKey);
}

xel::JSONValue XELStreamInitResponse::configureStreamInitResponse_withRequest(
    const xel::JSONValue& response, const std::shared_ptr<XELStreamRequest>& request) {
  const auto manifest = response[streamManifestKey].text();
  if (!request || !manifest) return response;
  const std::string written = request->manifestURLSuffix().value_or("");
  std::string_view suffix = xel::trimmed(written);
  if (suffix.starts_with('?')) suffix.remove_prefix(1);
  if (suffix.empty()) return response;
  const auto changed = manifestWithSuffix(*manifest, suffix);
  return changed ? response.withMember(streamManifestKey, *changed) : response;
}
