#include "simulation/trace/SequenceDiff.h"

#include <algorithm>

namespace xel::simulation {
namespace {

/// Beyond that, what differs is taken as different from beginning to end.
constexpr std::size_t maxCells = 4'000'000;

}  // namespace

std::vector<SequenceChange> diff(std::size_t firstSize, std::size_t secondSize,
                                 const std::function<bool(std::size_t, std::size_t)>& areEqual) {
  std::size_t begin = 0;
  while (begin < firstSize && begin < secondSize && areEqual(begin, begin)) ++begin;
  std::size_t firstEnd = firstSize;
  std::size_t secondEnd = secondSize;
  while (firstEnd > begin && secondEnd > begin && areEqual(firstEnd - 1, secondEnd - 1)) {
    --firstEnd;
    --secondEnd;
  }

  // Of the rests of both, from each pair of places on: how much they have in common, in order.
  const auto rows = firstEnd - begin;
  const auto columns = secondEnd - begin;
  const bool isSmall = columns == 0 || rows <= maxCells / columns;
  std::vector<std::size_t> common(isSmall ? (rows + 1) * (columns + 1) : 0);
  const auto cell = [&](std::size_t row, std::size_t column) -> std::size_t& {
    return common[row * (columns + 1) + column];
  };
  for (auto row = isSmall ? rows : 0; row-- > 0;) {
    for (auto column = columns; column-- > 0;) {
      cell(row, column) = areEqual(begin + row, begin + column)
                              ? cell(row + 1, column + 1) + 1
                              : std::max(cell(row + 1, column), cell(row, column + 1));
    }
  }

  std::vector<SequenceChange> changes;
  std::vector<std::size_t> removed;
  std::vector<std::size_t> added;
  const auto flush = [&](std::size_t place) {
    for (std::size_t i = 0; i < std::max(removed.size(), added.size()); ++i) {
      SequenceChange change = {place, std::nullopt, std::nullopt};
      if (i < added.size()) change.second = added[i];
      if (i < removed.size()) change.first = change.place = removed[i];
      changes.push_back(change);
    }
    removed.clear();
    added.clear();
  };
  std::size_t row = 0;
  std::size_t column = 0;
  while (row < rows || column < columns) {
    const bool isBoth = row < rows && column < columns;
    if (isSmall && isBoth && areEqual(begin + row, begin + column)) {
      flush(begin + row);
      ++row;
      ++column;
    } else if (!isBoth ? row < rows : !isSmall || cell(row + 1, column) >= cell(row, column + 1)) {
      removed.push_back(begin + row++);
    } else {
      added.push_back(begin + column++);
    }
  }
  flush(firstEnd);
  return changes;
}

}  // namespace xel::simulation
