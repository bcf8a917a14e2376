#include "play/PlainView.h"

#include "play/EventText.h"

namespace xel {

void PlainView::show(double time, const PlayEvent& event) {
  const auto line = toLine(time, event);
  if (!line) return;
  std::fputs((filter_(*line) + '\n').c_str(), out_);
  std::fflush(out_);
}

}  // namespace xel
