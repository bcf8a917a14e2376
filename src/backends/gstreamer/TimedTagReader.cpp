#include "backends/gstreamer/TimedTagReader.h"

#include <optional>

#include "backends/gstreamer/BigEndian.h"
#include "backends/gstreamer/PackedAudioReader.h"
#include "backends/gstreamer/PieceJoiner.h"
#include "backends/gstreamer/SegmentReader.h"
#include "backends/gstreamer/TransportStreamReader.h"

namespace xel {

struct TimedTagReader::State {
  std::size_t take(std::span<const std::byte> bytes, const TagFound& found) {
    if (!reader) reader = makeReader(bytes);
    return reader ? reader->take(bytes, found) : 0;
  }
  std::unique_ptr<SegmentReader> makeReader(std::span<const std::byte> bytes) const;

  std::optional<double> runStart;
  PieceJoiner pieces;
  std::unique_ptr<SegmentReader> reader;  ///< Null until the format of the run is known.
};

std::unique_ptr<SegmentReader> TimedTagReader::State::makeReader(
    std::span<const std::byte> bytes) const {
  constexpr std::size_t enough = 3;
  if (bytes.size() < enough) return nullptr;
  const auto begin = bigEndianAt<enough>(bytes, 0);
  const bool isTag = begin == 0x494433;
  const bool isMPEGAudio = begin >> 13 == 0x7FF;
  const bool isAC3 = begin >> 8 == 0x0B77;
  if (isTag || isMPEGAudio || isAC3) return std::make_unique<PackedAudioReader>(*runStart);
  return std::make_unique<TransportStreamReader>(*runStart);
}

TimedTagReader::TimedTagReader() : state_(std::make_unique<State>()) {}
TimedTagReader::~TimedTagReader() = default;

void TimedTagReader::beginRun(double time) {
  state_->runStart = time;
  state_->pieces.clear();
  state_->reader = nullptr;
}

void TimedTagReader::read(std::span<const std::byte> bytes, const TagFound& found) {
  if (!state_->runStart) return;
  state_->pieces.add(bytes, [&](auto present) { return state_->take(present, found); });
}

}  // namespace xel
