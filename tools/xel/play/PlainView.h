#pragma once

#include <cstdio>
#include <utility>

#include "play/OutputFilter.h"
#include "play/PlayView.h"

namespace xel {

/// One readable line for each event, flushed.
class PlainView final : public PlayView {
 public:
  /// @param out stays open for as long as the view lives.
  PlainView(std::FILE* out, OutputFilter filter) : out_(out), filter_(std::move(filter)) {}
  void show(double time, const PlayEvent& event) override;

 private:
  std::FILE* const out_;
  const OutputFilter filter_;
};

}  // namespace xel
