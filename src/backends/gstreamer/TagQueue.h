#pragma once

#include <deque>
#include <mutex>
#include <vector>

#include "backends/gstreamer/TimedTagReader.h"

namespace xel {

/// Tags on their way from the streaming threads, which read far ahead, to the playhead.
///
/// A tag that comes a second time, as when two variants carry it, counts once. Threads: any.
class TagQueue {
 public:
  void add(TimedTag tag);
  /// Takes what is due at a position, in order of time; of one time, in the order of adding.
  std::vector<TimedTag> takeUntil(double position);
  /// Forgets everything, also what has been taken: after a jump it may come again.
  void clear();

 private:
  bool isKnown(const TimedTag& tag) const;

  std::mutex mutex_;
  std::deque<TimedTag> pending_;  ///< In order of time.
  std::deque<TimedTag> taken_;    ///< In order of taking; those that may still come again.
};

}  // namespace xel
