#pragma once

#include <vector>

#include "backends/curl/CurlHandles.h"
#include "backends/curl/CurlSettings.h"

namespace xel {

/// Easy handles that carry what all transfers of a client have in common. They are used again:
/// making and setting up a handle costs about as much as a small transfer over a warm connection.
/// I/O thread only, but for the constructor.
class HandlePool {
 public:
  /// `settings` must outlive this.
  explicit HandlePool(const CurlSettings& settings) : settings_(settings) {}

  CurlEasy take();
  /// @param handle in no multi handle, and with nothing set that points to its last transfer.
  void giveBack(CurlEasy handle);

 private:
  CurlEasy make() const;

  const CurlSettings& settings_;
  std::vector<CurlEasy> idle_;
};

}  // namespace xel
