#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "serve/MediaLibrary.h"
#include "serve/PlaylistWriter.h"
#include "serve/StreamPlan.h"

namespace xel::serve {

/// A stream stitched from the media library: the content with ads in it, in every rendition, with
/// the texts of its ads' events as timed metadata.
///
/// A live one is published as its time passes, beginning with three segments; its content starts
/// anew when it is at its end. Not thread-safe.
class MediaStream {
 public:
  MediaStream(std::shared_ptr<const MediaLibrary> library, const StreamPlan& plan, bool isLive);

  /// A playlist of renditions; `name` is the folder of their playlists beside it.
  static std::string masterPlaylist(const std::string& name,
                                    const std::vector<Rendition>& renditions = {Rendition::low,
                                                                                Rendition::high});
  /// @param now seconds of a steady clock; the first call of a live stream's is its start.
  std::string playlist(Rendition rendition, double now);
  /// Absent when there is none of that number, or no playlist has told of it yet.
  std::optional<std::string> segment(Rendition rendition, std::size_t index) const;
  /// Seconds of the stream that have been published by now; all of it when it is not live.
  double publishedUntil(double now) const;

 private:
  struct Piece {
    const MediaPart* part;
    std::size_t index;
    double start;
    double duration;
  };
  void addPart(const MediaPart& part, std::size_t first, double duration);
  std::size_t publishedCount(double now) const;
  std::vector<PlaylistSegment> playlistSegments(Rendition rendition) const;

  const std::shared_ptr<const MediaLibrary> library_;
  const std::vector<StreamText> texts_;
  const bool isLive_;
  double end_ = 0;
  std::vector<Piece> pieces_;
  std::optional<double> startedAt_;
  /// How many segments each rendition's last playlist told of.
  std::array<std::size_t, 3> told_ = {};
};

}  // namespace xel::serve
