#include "bench/Allocations.h"

#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

thread_local std::size_t calls = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++calls;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace xel::bench {

std::size_t allocations() noexcept { return calls; }

double heapBytes() noexcept {
  const auto heap = mallinfo2();
  return static_cast<double>(heap.uordblks + heap.hblkhd);
}

}  // namespace xel::bench
