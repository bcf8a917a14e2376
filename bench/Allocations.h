#pragma once

#include <cstddef>

namespace xel::bench {

/// How often this thread has called `operator new`.
std::size_t allocations() noexcept;

/// Bytes that the process has on its heap.
double heapBytes() noexcept;

}  // namespace xel::bench
