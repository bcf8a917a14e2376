#include "backends/gstreamer/ID3Header.h"

#include <algorithm>

namespace xel {
namespace {

/// Whether the bytes, as far as they go, are an ID3 header.
bool mayBeHeader(std::span<const std::byte> bytes) {
  for (std::size_t i = 0; i < std::min(bytes.size(), id3HeaderSize); ++i) {
    const auto byte = std::to_integer<unsigned>(bytes[i]);
    const bool fits = i < 3    ? byte == static_cast<unsigned char>("ID3"[i])
                      : i == 3 ? byte >= 2 && byte <= 4
                      : i == 4 ? byte != 0xFF
                               : i == 5 || byte < 0x80;
    if (!fits) return false;
  }
  return true;
}

}  // namespace

std::optional<std::size_t> id3TagSize(std::span<const std::byte> bytes) {
  if (bytes.size() < id3HeaderSize || !mayBeHeader(bytes)) return std::nullopt;
  std::size_t size = 0;
  for (std::size_t i = 6; i < id3HeaderSize; ++i) {
    size = size << 7 | std::to_integer<std::size_t>(bytes[i]);
  }
  const bool hasFooter = bytes[3] == std::byte{4} && (bytes[5] & std::byte{0x10}) != std::byte{0};
  return id3HeaderSize + size + (hasFooter ? id3HeaderSize : 0);
}

std::size_t findID3Tag(std::span<const std::byte> bytes) {
  for (std::size_t at = 0;; ++at) {
    const auto rest = bytes.subspan(at);
    at += static_cast<std::size_t>(std::find(rest.begin(), rest.end(), std::byte{'I'}) -
                                   rest.begin());
    if (mayBeHeader(bytes.subspan(at))) return at;  // At the end as well.
  }
}

}  // namespace xel
