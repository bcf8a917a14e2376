#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace xel {

/// A span of stream time, in seconds.
struct TimeSpan {
  double start;
  double end;
};

/// What a cell of a progress bar stands for.
enum class BarCell { ahead, played, breakAhead, breakPlayed };

/// A stream as a row of cells of equal length. A break shows in at least one cell, however short it
/// is; times that are not on the bar, or not numbers, show nowhere.
std::vector<BarCell> barCells(double position, double end, const std::vector<TimeSpan>& breaks,
                              std::size_t width);

}  // namespace xel
