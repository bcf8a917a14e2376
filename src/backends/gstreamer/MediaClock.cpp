#include "backends/gstreamer/MediaClock.h"

namespace xel {
namespace {

constexpr double ticksPerSecond = 90'000;
constexpr int unusedBits = 64 - 33;

}  // namespace

void MediaClock::anchor(std::uint64_t timestamp, double time) {
  isAnchored_ = true;
  anchorTime_ = time;
  lastTimestamp_ = timestamp;
  lastTicks_ = 0;
}

double MediaClock::timeOf(std::uint64_t timestamp) const {
  return anchorTime_ + static_cast<double>(ticksSinceAnchor(timestamp)) / ticksPerSecond;
}

void MediaClock::follow(std::uint64_t timestamp) {
  lastTicks_ = ticksSinceAnchor(timestamp);
  lastTimestamp_ = timestamp;
}

std::int64_t MediaClock::ticksSinceAnchor(std::uint64_t timestamp) const {
  // The difference, with its 33rd bit for a sign.
  const auto difference = static_cast<std::int64_t>((timestamp - lastTimestamp_) << unusedBits);
  return lastTicks_ + (difference >> unusedBits);
}

}  // namespace xel
