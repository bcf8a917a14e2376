#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "xel/simulation/StreamInfoBuilder.h"

#include "serve/GivenDocument.h"
#include "serve/MediaLibrary.h"
#include "serve/MediaStream.h"
#include "serve/PlaylistWriter.h"
#include "serve/StreamPlan.h"
#include "serve/StreamRequestCheck.h"

namespace xel::serve {

/// One stream session: what its player gets, and how far it has got.
///
/// A live stream without media grows by one segment with each fetch of its playlist, so that it
/// keeps step with players of any speed; one with media grows as time passes. Its document is ahead
/// of it by some breaks, and without media no segment is due before the player has had a document
/// that knows its ads.
/// Not thread-safe.
class ServedStream {
 public:
  struct Settings {
    StreamKind kind = StreamKind::vod;
    bool preroll = false;
    /// Seconds of the main stream; for generated live streams.
    double liveDuration = 60;
    std::string streamID;
    /// Where the stream's documents are, such as "https://localhost:8443/streams/1".
    std::string url;
    /// Where its pings go, such as "https://localhost:8443/track/1".
    std::string trackingURL;
    std::array<std::string, 2> measurementDomains;
    /// The stream info document, if it is not to be generated; "{tracking}" in it stands for
    /// `trackingURL`.
    std::shared_ptr<const GivenDocument> document;
    /// The media to stream; null: playlists alone.
    std::shared_ptr<const MediaLibrary> media;
    /// Seconds of a steady clock; needed with media.
    std::function<double()> now;
  };

  /// Seconds between two polls of a live document.
  static constexpr double pollingPeriod = 1;

  explicit ServedStream(Settings settings);

  const Settings& settings() const noexcept { return settings_; }
  /// The answer to the stream request.
  std::string answer() const;

  /// The document as it is now. A live one knows the breaks that start within the next while.
  const std::string& fetchDocument();
  /// Tells that the document fetched last has been sent: its player can know it now.
  void documentSent();
  /// Tells that a document was asked for and will not reach the player: the stream goes on without.
  void documentLost();
  /// As it was sent last; empty when it has not been sent.
  const std::string& sentDocument() const noexcept { return sentDocument_; }

  /// Whether the next `fetchPlaylist` adds nothing that the document sent last does not know.
  /// A player that never fetches the document is not waited for.
  bool isNextSegmentDue() const;
  /// The main playlist: all of it for an on-demand stream, a window of six segments for a live one.
  std::string fetchPlaylist();
  /// Empty when the stream has no pre-roll.
  std::string prerollPlaylist() const;

  /// The media behind the main playlist, or behind that of the pre-roll; null when there are none.
  MediaStream* media(const std::string& name);

 private:
  simulation::StreamInfoBuilder builder() const;
  void addBreak(const PlannedBreak& planned, simulation::StreamInfoBuilder& builder) const;
  PlaylistWriter mainPlaylist() const;
  std::size_t nextPublished() const;

  const Settings settings_;
  const StreamPlan plan_;
  const PlaylistWriter mainPlaylist_;
  std::optional<MediaStream> mainMedia_;
  std::optional<MediaStream> prerollMedia_;
  /// As it was fetched last.
  std::string lastDocument_;
  std::string sentDocument_;
  /// Segments of the live stream that have been published.
  std::size_t published_ = 0;
  /// Seconds of the live stream that `lastDocument_` knows the ads of.
  double fetchedCover_ = 0;
  /// Seconds of the live stream that the document sent or lost last knows the ads of.
  double covered_ = 0;
};

}  // namespace xel::serve
