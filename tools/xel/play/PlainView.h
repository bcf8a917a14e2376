#pragma once

#include <cstdio>

#include "play/PlayView.h"

namespace xel {

/// One readable line for each event, flushed.
class PlainView final : public PlayView {
 public:
  /// @param out stays open for as long as the view lives.
  explicit PlainView(std::FILE* out) : out_(out) {}
  void show(double time, const PlayEvent& event) override;

 private:
  std::FILE* const out_;
};

}  // namespace xel
