#include "backends/gstreamer/StallWatch.h"

#include <cmath>

namespace xel {

void StallWatch::restart(double now) { now_ = moved_ = heard_ = now; }

void StallWatch::see(double now, double position, std::uint64_t arrivals) {
  now_ = now;
  if (!std::isnan(position) && position != position_) {
    position_ = position;
    moved_ = now;
  }
  if (arrivals != arrivals_) {
    arrivals_ = arrivals;
    heard_ = now;
  }
}

}  // namespace xel
