#include "play/StreamTimeline.h"

#include <algorithm>
#include <cmath>

namespace xel {
namespace {

double sumToTheNanosecond(double a, double b) { return std::round((a + b) * 1e9) / 1e9; }

}  // namespace

std::uint64_t StreamTimeline::append(const MediaPlaylist& playlist) {
  const auto expected = nextSequence_.value_or(playlist.mediaSequence);
  const auto missed = playlist.mediaSequence - std::min(playlist.mediaSequence, expected);
  const auto known = expected - std::min(playlist.mediaSequence, expected);
  const auto& segments = playlist.segments;
  for (std::size_t i = std::min<std::uint64_t>(known, segments.size()); i < segments.size(); ++i) {
    for (const auto& text : segments[i].texts) {
      texts_.emplace(sumToTheNanosecond(end_, text.offset), text.value);
    }
    end_ = sumToTheNanosecond(end_, segments[i].duration);
  }
  nextSequence_ = std::max(expected, playlist.mediaSequence + segments.size());
  isFinished_ = playlist.isFinished;
  targetDuration_ = playlist.targetDuration;
  return segments.empty() ? 0 : missed;
}

}  // namespace xel
