#include "backends/gstreamer/TagQueue.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace xel {
namespace {

/// Seconds. Two renditions of a stream tell the same moment this exactly.
constexpr double sameTime = 0.005;
/// Seconds, and more than a segment is long: what has been taken earlier is not read again.
constexpr double longestMemory = 120;
constexpr std::size_t mostPending = 10'000;

}  // namespace

void TagQueue::add(TimedTag tag) {
  const std::lock_guard lock(mutex_);
  if (isKnown(tag) || pending_.size() >= mostPending) return;
  const auto after =
      std::upper_bound(pending_.begin(), pending_.end(), tag.time,
                       [](double time, const TimedTag& each) { return time < each.time; });
  pending_.insert(after, std::move(tag));
}

std::vector<TimedTag> TagQueue::takeUntil(double position) {
  const std::lock_guard lock(mutex_);
  const auto end = std::find_if(pending_.begin(), pending_.end(),
                                [position](const TimedTag& each) { return each.time > position; });
  std::vector<TimedTag> due(std::make_move_iterator(pending_.begin()),
                            std::make_move_iterator(end));
  pending_.erase(pending_.begin(), end);
  taken_.insert(taken_.end(), due.begin(), due.end());
  while (!taken_.empty() && taken_.front().time < position - longestMemory) taken_.pop_front();
  return due;
}

void TagQueue::clear() {
  const std::lock_guard lock(mutex_);
  pending_.clear();
  taken_.clear();
}

bool TagQueue::isKnown(const TimedTag& tag) const {
  const auto isSame = [&tag](const TimedTag& each) {
    return std::abs(each.time - tag.time) <= sameTime && each.items == tag.items;
  };
  return std::any_of(pending_.begin(), pending_.end(), isSame) ||
         std::any_of(taken_.begin(), taken_.end(), isSame);
}

}  // namespace xel
