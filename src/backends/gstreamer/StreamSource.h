#pragma once

#include <atomic>
#include <cstdint>

#include "backends/gstreamer/TagQueue.h"

namespace xel {

/// What the streaming threads tell of a stream's source. Threads: any.
struct StreamSource {
  TagQueue tags;
  /// Grows with everything that arrives from the server.
  std::atomic<std::uint64_t> arrivals = 0;
  std::atomic<bool> isHLS = false;
};

}  // namespace xel
