#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "serve/PlaylistWriter.h"

namespace xel::serve {

// Both take segments that `MediaLibrary` made, and texts with times from the segment's start, in
// order.

/// An MPEG transport stream segment with the texts as timed metadata: a stream of its own in the
/// program, and a unit for each text before the first picture at or after its time.
/// @param earlierPackets what the texts of the segments before it took: continuity goes on.
std::string taggedTransportStream(std::string_view segment, const std::vector<StreamText>& texts,
                                  std::size_t earlierPackets);

/// How many transport stream packets a text takes.
std::size_t packetsOf(const StreamText& text);

/// A packed audio segment (RFC 8216, 3.4): a tag with the timestamp, then the AAC frames with
/// each text before the one that begins nearest to its time.
/// @param ticks the presentation time of the first frame, at 90 kHz.
std::string taggedPackedAudio(std::string_view frames, std::uint64_t ticks,
                              const std::vector<StreamText>& texts);

/// The bytes of one AAC frame with its header (ADTS); 0 where none begins.
std::size_t adtsFrameSize(std::string_view bytes);

/// AAC frames of the library's media: samples in each, and samples a second.
inline constexpr int samplesPerFrame = 1024;
inline constexpr int sampleRate = 48000;

}  // namespace xel::serve
