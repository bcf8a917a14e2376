#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace xel {

/// The type of an MP4 box, such as "moof".
constexpr std::uint32_t boxType(const char (&name)[5]) {
  std::uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<unsigned char>(name[i]);
  return type;
}

/// Where a box of an MP4 file begins and ends.
struct MP4Box {
  static constexpr std::size_t largestHeader = 16;

  /// Absent if the bytes do not begin with a box, or not with the whole of its header.
  static std::optional<MP4Box> read(std::span<const std::byte> bytes);

  std::uint32_t type;
  std::size_t headerSize;
  /// Bytes, with the header; what goes on to the end of the file has the largest there is.
  std::size_t size;
};

/// Calls `visit(type, body)` for each box that is whole, one after the other.
template <class Visit>
void forEachBox(std::span<const std::byte> bytes, Visit visit) {
  for (auto box = MP4Box::read(bytes); box && box->size <= bytes.size();
       box = MP4Box::read(bytes)) {
    visit(box->type, bytes.first(box->size).subspan(box->headerSize));
    bytes = bytes.subspan(box->size);
  }
}

}  // namespace xel
