#pragma once

#include "xel/platform/JSONValue.h"

#include "document/GivenDocument.h"
#include "serve/PlaylistWriter.h"

namespace xel::serve {

using xel::GivenDocument;

/// A stream to go with a stream info document: long enough for its last cue point and second.
PlaylistWriter vodPlaylistFor(const JSONValue& streamInfo);

/// A stream to go with a stream info document: it carries the document's tags, one each second, in
/// the order of the document.
PlaylistWriter livePlaylistFor(const JSONValue& streamInfo);

}  // namespace xel::serve
