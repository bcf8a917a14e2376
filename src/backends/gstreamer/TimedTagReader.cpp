#include "backends/gstreamer/TimedTagReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "backends/gstreamer/BigEndian.h"
#include "backends/gstreamer/EventMessageReader.h"
#include "backends/gstreamer/MP4Box.h"
#include "backends/gstreamer/PackedAudioReader.h"
#include "backends/gstreamer/PieceJoiner.h"
#include "backends/gstreamer/SegmentReader.h"
#include "backends/gstreamer/TransportStreamReader.h"

namespace xel {
namespace {

/// Whether segments of MP4 begin with such a box.
bool isMP4(std::uint32_t type) {
  constexpr std::array types{boxType("ftyp"), boxType("styp"), boxType("moov"), boxType("moof"),
                             boxType("sidx"), boxType("emsg"), boxType("prft"), boxType("free")};
  return std::find(types.begin(), types.end(), type) != types.end();
}

}  // namespace

struct TimedTagReader::State {
  std::size_t take(std::span<const std::byte> bytes, const TagFound& found) {
    if (!reader) reader = makeReader(bytes);
    return reader ? reader->take(bytes, found) : 0;
  }
  std::unique_ptr<SegmentReader> makeReader(std::span<const std::byte> bytes);

  std::optional<double> runStart;
  EventMessageReader::Timescales timescales;
  PieceJoiner pieces;
  std::unique_ptr<SegmentReader> reader;  ///< Null until the format of the run is known.
};

std::unique_ptr<SegmentReader> TimedTagReader::State::makeReader(std::span<const std::byte> bytes) {
  constexpr std::size_t enough = 8;
  if (bytes.size() < enough) return nullptr;
  if (isMP4(static_cast<std::uint32_t>(bigEndianAt<4>(bytes, 4)))) {
    return std::make_unique<EventMessageReader>(*runStart, timescales);
  }
  const auto begin = bigEndianAt<3>(bytes, 0);
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
