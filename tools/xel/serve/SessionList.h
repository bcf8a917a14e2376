#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "xel/platform/Platform.h"

#include "serve/GivenDocument.h"
#include "serve/Ledger.h"
#include "serve/PingCheck.h"
#include "serve/ServedStream.h"

namespace xel::serve {

/// What the streams are made of.
struct StreamSources {
  /// Seconds; of generated live streams.
  double liveDuration = 60;
  /// Served in place of generated ones. In the document, "{tracking}" stands for where the
  /// session's pings go, such as "https://localhost:8443/track/1"; in the answer, "{session}" for
  /// its URL, such as "https://localhost:8443/streams/1".
  std::shared_ptr<const GivenDocument> document;
  std::optional<GivenDocument> answer;
  /// The media of the streams; null: playlists alone. Not with `document`.
  std::shared_ptr<const MediaLibrary> media;
  /// Those that the players know.
  std::array<std::string, 2> measurementDomains = Services().measurementDomains;
};

/// A stream request that is granted.
struct GrantedRequest {
  StreamKind kind = StreamKind::vod;
  std::string body;
  /// Its place in the ledger.
  std::size_t place = 0;
};

/// The sessions of a server, numbered from 1. Not thread-safe.
class SessionList {
 public:
  explicit SessionList(StreamSources sources) : sources_(std::move(sources)) {}

  /// Opens a session, and answers its stream request.
  /// @param server such as "https://localhost:8443".
  std::string open(const GrantedRequest& request, const std::string& server);
  /// Null when there is none of that number.
  ServedStream* find(const std::string& number) const;

  /// A JSON array of objects with "streamID", "streamType" and "document", which is null when none
  /// has reached the player.
  std::string documents() const;
  /// The sessions whose answer has reached the player.
  std::vector<SessionRecord> records(const std::vector<Ledger::Entry>& ledger) const;

 private:
  struct Session {
    std::unique_ptr<ServedStream> stream;
    std::size_t requestPlace;
    PingSender sender;
  };

  const StreamSources sources_;
  std::vector<Session> sessions_;
};

}  // namespace xel::serve
