#pragma once

#include <string>

#include "xel/platform/JSONValue.h"

#include "serve/PlaylistWriter.h"

namespace xel::serve {

/// A JSON object that the user wrote. `text` is served as it stands.
struct GivenDocument {
  std::string text;
  JSONValue value;

  /// Throws std::runtime_error with one line when the file cannot be read or is no JSON object.
  static GivenDocument read(const std::string& file);
};

/// A stream to go with a stream info document: long enough for its last cue point and second.
PlaylistWriter vodPlaylistFor(const JSONValue& streamInfo);

/// A stream to go with a stream info document: it carries the document's tags, one each second, in
/// the order of the document.
PlaylistWriter livePlaylistFor(const JSONValue& streamInfo);

}  // namespace xel::serve
