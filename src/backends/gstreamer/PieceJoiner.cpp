#include "backends/gstreamer/PieceJoiner.h"

#include <algorithm>

namespace xel {
namespace {

/// How much of a piece is put to what was left of earlier ones before the reader looks again.
constexpr std::size_t step = 512;

}  // namespace

void PieceJoiner::add(std::span<const std::byte> piece, const Take& take) {
  while (true) {
    const std::size_t skipped = std::min(skip_, piece.size());
    skip_ -= skipped;
    piece = piece.subspan(skipped);
    if (piece.empty()) return;

    if (left_.empty()) {
      const std::size_t taken = take(piece);
      if (taken > piece.size())
        skip_ = taken - piece.size();
      else
        left_.assign(piece.begin() + static_cast<std::ptrdiff_t>(taken), piece.end());
      return;
    }
    const std::size_t before = left_.size();
    const auto added = piece.first(std::min(piece.size(), step));
    left_.insert(left_.end(), added.begin(), added.end());
    const std::size_t taken = take(left_);
    if (taken < before) {
      left_.erase(left_.begin(), left_.begin() + static_cast<std::ptrdiff_t>(taken));
      piece = piece.subspan(added.size());
    } else {  // What follows lies in the piece.
      left_.clear();
      skip_ = taken - before;
    }
  }
}

void PieceJoiner::clear() {
  left_.clear();
  skip_ = 0;
}

}  // namespace xel
