#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace xel {

inline constexpr std::size_t id3HeaderSize = 10;

/// The size in bytes of the ID3 tag that begins here, header and footer included; absent if none
/// does, or not the whole of its header is there.
std::optional<std::size_t> id3TagSize(std::span<const std::byte> bytes);

/// Where the first ID3 tag begins, or may begin if more bytes follow; their number if nowhere.
std::size_t findID3Tag(std::span<const std::byte> bytes);

}  // namespace xel
