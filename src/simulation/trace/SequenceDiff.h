#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace xel::simulation {

/// A place at which two sequences differ: something in the one, in the other, or in both.
struct SequenceChange {
  /// In the first sequence: of what differs there, or of what comes after that.
  std::size_t place;
  /// What stands in the first and in the second sequence; absent where nothing does.
  std::optional<std::size_t> first;
  std::optional<std::size_t> second;
};

/// The fewest changes that make the second sequence of the first, in order.
std::vector<SequenceChange> diff(std::size_t firstSize, std::size_t secondSize,
                                 const std::function<bool(std::size_t, std::size_t)>& areEqual);

}  // namespace xel::simulation
