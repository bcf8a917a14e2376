#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include <boost/json/memory_resource.hpp>

namespace xel {

/// The memory of one parsed document: handed out from blocks, and released with all of them.
///
/// Blocks are an eighth of the text each, so that little of the last one stays unused; blocks that
/// double waste up to half.
class JSONMemory final : public boost::json::memory_resource {
 public:
  explicit JSONMemory(std::size_t bytesOfText)
      : bytesOfBlock_(std::clamp(bytesOfText / 8, smallestBlock, largestBlock)) {}

 private:
  static constexpr std::size_t smallestBlock = 512;
  static constexpr std::size_t largestBlock = std::size_t{1} << 20;

  void* do_allocate(std::size_t bytes, std::size_t alignment) override {
    if (!std::align(alignment, bytes, next_, left_)) {
      // What fills most of a block gets one of its own, and the present one goes on being used.
      if (bytes > bytesOfBlock_ / 2) return newBlock(bytes);
      next_ = newBlock(bytesOfBlock_);
      left_ = bytesOfBlock_;
    }
    void* const memory = next_;
    next_ = static_cast<std::byte*>(next_) + bytes;
    left_ -= bytes;
    return memory;
  }

  void do_deallocate(void*, std::size_t, std::size_t) noexcept override {}
  bool do_is_equal(const boost::json::memory_resource& other) const noexcept override {
    return this == &other;
  }

  /// Aligned for every fundamental type, as all that a document holds.
  void* newBlock(std::size_t bytes) {
    blocks_.push_back(std::unique_ptr<std::byte[]>(new std::byte[bytes]));
    return blocks_.back().get();
  }

  const std::size_t bytesOfBlock_;
  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  void* next_ = nullptr;
  std::size_t left_ = 0;
};

}  // namespace xel

/// Values in such memory need not be destroyed one by one.
template <>
struct boost::json::is_deallocate_trivial<xel::JSONMemory> : std::true_type {};
