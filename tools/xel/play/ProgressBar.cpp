#include "play/ProgressBar.h"

#include <algorithm>
#include <cmath>

namespace xel {

std::vector<BarCell> barCells(double position, double end, const std::vector<TimeSpan>& breaks,
                              std::size_t width) {
  std::vector<BarCell> cells(width, BarCell::ahead);
  if (width == 0 || !(end > 0)) return cells;
  // What is not a number lies at the start.
  const auto cellAt = [&](double time, auto rounding) {
    const auto cell = rounding(time / end * static_cast<double>(width));
    return static_cast<std::size_t>(std::fmin(std::fmax(cell, 0), static_cast<double>(width)));
  };
  const auto down = [](double x) { return std::floor(x); };
  const auto up = [](double x) { return std::ceil(x); };

  const auto playedCells = cellAt(position, down);
  std::fill_n(cells.begin(), playedCells, BarCell::played);
  for (const auto& span : breaks) {
    if (!(span.start < end && span.end > 0 && span.start < span.end)) continue;
    for (auto i = cellAt(span.start, down); i < cellAt(span.end, up); ++i) {
      cells[i] = i < playedCells ? BarCell::breakPlayed : BarCell::breakAhead;
    }
  }
  return cells;
}

}  // namespace xel
