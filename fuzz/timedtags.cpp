// ID3 tags in transport streams, packed audio and fragmented MP4: what is found must not depend on
// the pieces in which the bytes come.

#include <cmath>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "backends/gstreamer/TimedTagReader.h"
#include "fuzz/support/Require.h"

namespace {

using xel::fuzz::require;
using Found = std::vector<std::pair<double, std::string>>;

/// Two segments, with a run's begin between them.
struct Segments {
  std::string first, second;
};

/// @param sizes of the pieces, in turn; empty for one piece.
Found read(const Segments& segments, const std::vector<std::size_t>& sizes) {
  xel::TimedTagReader reader;
  Found found;
  std::size_t piece = 0;
  double start = 100;
  for (const std::string* segment : {&segments.first, &segments.second}) {
    reader.beginRun(start += 100);
    for (std::size_t at = 0; at < segment->size();) {
      const std::size_t size = sizes.empty() ? segment->size() : sizes[piece++ % sizes.size()];
      // On the heap, where a read beyond a piece is seen.
      const auto text = segment->substr(at, size);
      const std::vector<char> bytes(text.begin(), text.end());
      at += bytes.size();
      reader.read(std::as_bytes(std::span(bytes)), [&found](const xel::TimedTag& tag) {
        require(!tag.items.empty() && std::isfinite(tag.time), "a tag without items or time");
        std::string items;
        for (const auto& [key, value] : tag.items) items += key + '=' + value.value_or("-") + '\n';
        found.emplace_back(tag.time, std::move(items));
      });
    }
  }
  return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  std::vector<std::size_t> sizes(input.ConsumeIntegralInRange<std::size_t>(1, 8));
  for (std::size_t& each : sizes) each = input.ConsumeIntegralInRange<std::size_t>(1, 400);
  Segments segments;
  const auto length = input.ConsumeIntegral<std::uint16_t>();
  segments.second = input.ConsumeBytesAsString(length);
  segments.first = input.ConsumeRemainingBytesAsString();
  const Found whole = read(segments, {});
  require(read(segments, sizes) == whole, "tags that depend on the pieces");
  require(read(segments, {1}) == whole, "tags that depend on single bytes");
  return 0;
}
