#pragma once

#include <chrono>
#include <cstdint>

#include "xel/platform/HTTPClient.h"

namespace xel {

/// Names a request of one client from `send` to its completion.
using TransferID = std::uint64_t;

/// A request that has been accepted and must have its answer by the deadline.
struct CurlJob {
  using Clock = std::chrono::steady_clock;

  TransferID id = 0;
  HTTPRequest request;
  Clock::time_point deadline;
};

}  // namespace xel
