#include "PlaylistWriter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace xel::serve {
namespace {

constexpr long long segmentMilliseconds =
    static_cast<long long>(PlaylistWriter::segmentSeconds * 1000);

long long toMilliseconds(double seconds) { return std::llround(seconds * 1000); }

/// Such as "1.950".
std::string seconds(long long milliseconds) {
  const std::string fraction = std::to_string(milliseconds % 1000);
  return std::to_string(milliseconds / 1000) + "." + std::string(3 - fraction.size(), '0') +
         fraction;
}

}  // namespace

PlaylistWriter::PlaylistWriter(double duration, std::vector<StreamText> texts)
    : milliseconds_(std::max(1LL, toMilliseconds(duration))),
      texts_(std::move(texts)),
      segmentCount_(static_cast<std::size_t>((milliseconds_ + segmentMilliseconds - 1) /
                                             segmentMilliseconds)) {}

std::string PlaylistWriter::playlist(std::size_t first, std::size_t end) const {
  std::string text = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:" +
                     std::to_string(static_cast<int>(std::ceil(segmentSeconds))) +
                     "\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
  auto next = std::find_if(texts_.begin(), texts_.end(), [first](const StreamText& each) {
    return toMilliseconds(each.time) >= static_cast<long long>(first) * segmentMilliseconds;
  });
  for (std::size_t segment = first; segment < end; ++segment) {
    const long long start = static_cast<long long>(segment) * segmentMilliseconds;
    const long long stop = std::min(start + segmentMilliseconds, milliseconds_);
    for (; next != texts_.end() && toMilliseconds(next->time) < stop; ++next) {
      if (next->value.find_first_of("\r\n") != std::string::npos) continue;
      text += "#XEL-TXXX:" + seconds(toMilliseconds(next->time) - start) + "," + next->value + "\n";
    }
    text += "#EXTINF:" + seconds(stop - start) + ",\nsegment-" + std::to_string(segment) + ".ts\n";
  }
  if (end == segmentCount_) text += "#EXT-X-ENDLIST\n";
  return text;
}

}  // namespace xel::serve
