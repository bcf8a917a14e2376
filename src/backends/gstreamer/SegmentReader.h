#pragma once

#include <cstddef>
#include <functional>
#include <span>

namespace xel {

struct TimedTag;
using TagFound = std::function<void(TimedTag)>;

/// Holds at most this much of an ID3 tag, in bytes; a larger one is passed over.
inline constexpr std::size_t largestTag = 262'144;
/// Holds at most this many tags whose time is not known yet; further ones are dropped.
inline constexpr std::size_t mostWaitingTags = 1'024;

/// Finds the ID3 tags in segments of one format.
class SegmentReader {
 public:
  virtual ~SegmentReader() = default;

  /// Takes all that it can from the front of `bytes`.
  /// @return how many it has taken. It sees the others again, with more behind them; if it has
  /// taken
  ///         more than there are, it skips as many of those that follow.
  virtual std::size_t take(std::span<const std::byte> bytes, const TagFound& found) = 0;
};

}  // namespace xel
