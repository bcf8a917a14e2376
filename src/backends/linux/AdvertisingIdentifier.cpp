#include "backends/linux/AdvertisingIdentifier.h"

namespace xel {

std::optional<std::string> canonicalUUID(std::string_view text) {
  if (text.size() != zeroUUID.size()) return std::nullopt;
  std::string upper(text);
  for (std::size_t i = 0; i < upper.size(); ++i) {
    char& c = upper[i];
    if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
    const bool hexDigit = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
    if (zeroUUID[i] == '-' ? c != '-' : !hexDigit) return std::nullopt;
  }
  return upper;
}

}  // namespace xel
