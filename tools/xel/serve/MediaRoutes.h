#pragma once

#include <functional>
#include <mutex>

#include <httplib.h>

#include "serve/FaultInjector.h"
#include "serve/ServedStream.h"

namespace xel::serve {

/// Finds the stream that a path names by its first number; null when there is none.
using StreamFinder = std::function<ServedStream*(const httplib::Request&)>;

/// Serves what a stream with media is made of: the playlists of its renditions, such as
/// "/streams/1/main/low.m3u8", their segments beside them, and "/streams/1/audio.m3u8", a playlist
/// of the sound alone.
/// @param mutex is held while a stream is looked for and used.
void addMediaRoutes(httplib::Server& server, FaultInjector& faults, std::mutex& mutex,
                    const StreamFinder& find);

}  // namespace xel::serve
