#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace xel {

/// Shows a stream that comes in pieces to a reader for whose units the pieces are cut anywhere.
class PieceJoiner {
 public:
  /// Takes from the front of the bytes, as `SegmentReader::take` does.
  using Take = std::function<std::size_t(std::span<const std::byte>)>;

  /// Calls `take` until it needs more than has come. What it leaves is kept for the next piece, all
  /// else is read in place.
  void add(std::span<const std::byte> piece, const Take& take);
  void clear();

 private:
  std::vector<std::byte> left_;
  std::size_t skip_ = 0;
};

}  // namespace xel
