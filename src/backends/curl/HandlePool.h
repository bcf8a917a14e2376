#pragma once

#include <vector>

#include "backends/curl/CurlHandles.h"
#include "backends/curl/CurlSettings.h"

namespace xel {

/// Easy handles that carry what all transfers of a client have in common. They are used again,
/// which costs less than to make new ones. I/O thread only, but for the constructor.
class HandlePool {
 public:
  /// `settings` must outlive this.
  explicit HandlePool(const CurlSettings& settings) : settings_(settings) {}

  CurlEasy take();
  /// @param handle in no multi handle.
  void giveBack(CurlEasy handle);

 private:
  void prepare(CURL* easy) const;

  const CurlSettings& settings_;
  std::vector<CurlEasy> idle_;
};

}  // namespace xel
