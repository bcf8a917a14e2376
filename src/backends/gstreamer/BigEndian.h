#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace xel {

/// The unsigned number that `Size` bytes are, the most significant one first.
template <std::size_t Size>
constexpr std::uint64_t bigEndian(std::span<const std::byte, Size> bytes) {
  static_assert(Size <= sizeof(std::uint64_t));
  std::uint64_t number = 0;
  for (const std::byte each : bytes) number = number << 8 | std::to_integer<std::uint64_t>(each);
  return number;
}

/// The number of `Size` bytes from `offset` on, which must be there.
template <std::size_t Size>
constexpr std::uint64_t bigEndianAt(std::span<const std::byte> bytes, std::size_t offset) {
  return bigEndian(bytes.subspan(offset).first<Size>());
}

}  // namespace xel
