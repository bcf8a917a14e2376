#include "report/PathThinner.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace xel::report {

void PathThinner::startFrom(const Point& kept) {
  kept_.push_back(kept);
  lowest_ = -std::numeric_limits<double>::infinity();
  highest_ = std::numeric_limits<double>::infinity();
}

void PathThinner::add(double time, double position) {
  const Point point(time, position);
  if (kept_.empty()) {
    startFrom(point);
    last_ = point;
    return;
  }
  const auto narrow = [&] {
    const auto [keptTime, keptPosition] = kept_.back();
    const double elapsed = std::max(time - keptTime, 1e-6);
    lowest_ = std::max(lowest_, (position - tolerance - keptPosition) / elapsed);
    highest_ = std::min(highest_, (position + tolerance - keptPosition) / elapsed);
  };
  narrow();
  if (lowest_ > highest_) {
    startFrom(last_);
    narrow();
  }
  last_ = point;
  lastIsKept_ = false;
}

PlayheadPath PathThinner::take() {
  if (!std::exchange(lastIsKept_, true)) kept_.push_back(last_);
  return std::exchange(kept_, {});
}

}  // namespace xel::report
