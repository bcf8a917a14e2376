#pragma once

#include "report/ReportModel.h"

namespace xel::report {

/// Keeps of a playhead's path only the points at which it bends, so that a day
/// of playback is as small as its seeks and pauses make it.
///
/// Every point left out lies within twice `tolerance` of the path that is kept.
class PathThinner {
 public:
  /// Seconds of stream time: below what a chart of an hour can show.
  static constexpr double tolerance = 0.05;

  /// Times must not decrease.
  void add(double time, double position);

  /// The path up to the last point; the next point begins another path.
  PlayheadPath take();

 private:
  using Point = PlayheadPath::value_type;

  void startFrom(const Point& kept);

  PlayheadPath kept_;
  Point last_;
  bool lastIsKept_ = true;
  /// The slopes of all lines from the last kept point that pass close enough to
  /// what came since.
  double lowest_ = 0;
  double highest_ = 0;
};

}  // namespace xel::report
