#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "xel/platform/MediaPlayer.h"

#include "backends/gstreamer/SegmentReader.h"

namespace xel {

/// Finds the ID3 tags in the event messages of fragmented MP4.
///
/// The run's first fragment is what is shown at the time at which the run begins. Messages wait for
/// the fragment that follows them.
class EventMessageReader final : public SegmentReader {
 public:
  /// The time units in a second, by track. They stand in the initialization section, which need not
  /// come again with each run.
  using Timescales = std::map<std::uint32_t, std::uint32_t>;

  /// @param runStart seconds of stream time at which the media begin.
  /// @param timescales what is known of the tracks; it is kept up to date, and outlives the reader.
  EventMessageReader(double runStart, Timescales& timescales)
      : runStart_(runStart), timescales_(timescales) {}

  std::size_t take(std::span<const std::byte> bytes, const TagFound& found) override;

 private:
  struct Message {
    double time;
    /// Whether its time counts from the fragment that follows; else it is one of the media's own.
    bool isRelative;
    std::vector<MediaMetadataItem> items;
  };

  void readMovie(std::span<const std::byte> body);
  void readFragment(std::span<const std::byte> body, const TagFound& found);
  void readMessage(std::span<const std::byte> body);
  /// Seconds on the media's own clock.
  std::optional<double> startOfTrackFragment(std::span<const std::byte> body) const;

  const double runStart_;
  Timescales& timescales_;
  /// Seconds on the media's own clock.
  std::optional<double> firstFragment_;
  std::deque<Message> waiting_;
};

}  // namespace xel
