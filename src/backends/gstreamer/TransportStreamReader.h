#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "xel/platform/MediaPlayer.h"

#include "backends/gstreamer/MediaClock.h"
#include "backends/gstreamer/ProgramTables.h"
#include "backends/gstreamer/SegmentReader.h"
#include "backends/gstreamer/TagStream.h"
#include "backends/gstreamer/TransportPacket.h"

namespace xel {

/// Finds ID3 tags in MPEG transport streams of 188-byte packets.
///
/// The run's first audio or video unit is what is shown at the time at which the run begins; tags
/// that come before it wait for it.
class TransportStreamReader final : public SegmentReader {
 public:
  /// @param runStart seconds of stream time at which the media begin.
  explicit TransportStreamReader(double runStart);

  std::size_t take(std::span<const std::byte> bytes, const TagFound& found) override;

 private:
  enum class Role : std::uint8_t { none, programAssociation, programMap, audioOrVideo, timedID3 };
  struct WaitingTag {
    std::uint64_t timestamp;
    std::vector<MediaMetadataItem> items;
  };

  void readPacket(TransportPacket::Bytes bytes, const TagFound& found);
  void readAssociation(std::span<const std::byte> section);
  void readMap(std::span<const std::byte> section);
  void assignRoles(const std::vector<ProgramStream>& streams);
  void readMedia(std::span<const std::byte> payload, const TagFound& found);
  void readTag(std::uint64_t timestamp, std::span<const std::byte> tag, const TagFound& found);

  const double runStart_;
  MediaClock clock_;
  bool isInSync_ = false;
  /// By PID.
  std::array<Role, 8192> roles_;
  SectionJoiner association_;
  std::optional<std::uint16_t> mapPID_;
  SectionJoiner map_;
  std::vector<std::byte> lastMap_;
  std::map<std::uint16_t, TagStream> tagStreams_;
  std::deque<WaitingTag> waiting_;
};

}  // namespace xel
