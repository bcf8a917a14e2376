#include "serve/PlaylistWriter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace xel::serve {
namespace {

long long toMilliseconds(double seconds) { return std::llround(seconds * 1000); }

/// Such as "1.950".
std::string seconds(long long milliseconds) {
  const std::string fraction = std::to_string(milliseconds % 1000);
  return std::to_string(milliseconds / 1000) + "." + std::string(3 - fraction.size(), '0') +
         fraction;
}

std::vector<PlaylistSegment> cut(double duration) {
  std::vector<PlaylistSegment> segments;
  for (double start = 0; segments.empty() || toMilliseconds(duration - start) > 0;
       start += PlaylistWriter::segmentSeconds) {
    segments.push_back({std::clamp(duration - start, 0.001, PlaylistWriter::segmentSeconds),
                        "segment-" + std::to_string(segments.size()) + ".ts"});
  }
  return segments;
}

}  // namespace

PlaylistWriter::PlaylistWriter(std::vector<PlaylistSegment> segments, std::vector<StreamText> texts)
    : segments_(std::move(segments)), texts_(std::move(texts)) {}

PlaylistWriter::PlaylistWriter(double duration, std::vector<StreamText> texts)
    : PlaylistWriter(cut(duration), std::move(texts)) {}

std::string PlaylistWriter::playlist(std::size_t first, std::size_t end, bool isFinal) const {
  std::string text;
  double longest = 0;
  int discontinuities = 0;
  long long start = 0;
  auto next = texts_.begin();
  for (std::size_t i = 0; i < end; ++i) {
    const auto& [duration, uri, isDiscontinuity] = segments_[i];
    const long long stop = start + toMilliseconds(duration);
    longest = std::max(longest, duration);
    if (i < first && isDiscontinuity) ++discontinuities;
    if (i >= first && isDiscontinuity) text += "#EXT-X-DISCONTINUITY\n";
    for (; next != texts_.end() && toMilliseconds(next->time) < stop; ++next) {
      if (i < first || next->value.find_first_of("\r\n") != std::string::npos) continue;
      text += "#XEL-TXXX:" + seconds(toMilliseconds(next->time) - start) + "," + next->value + "\n";
    }
    if (i >= first) text += "#EXTINF:" + seconds(stop - start) + ",\n" + uri + "\n";
    start = stop;
  }
  std::string head = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:" +
                     std::to_string(static_cast<int>(std::ceil(longest))) +
                     "\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
  if (discontinuities > 0) {
    head += "#EXT-X-DISCONTINUITY-SEQUENCE:" + std::to_string(discontinuities) + "\n";
  }
  return head + text + (isFinal ? "#EXT-X-ENDLIST\n" : "");
}

}  // namespace xel::serve
