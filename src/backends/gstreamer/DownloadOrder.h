#pragma once

namespace xel {

/// To be called on the threads that wait for GStreamer's HLS downloads.
///
/// When a playlist cannot be fetched, GStreamer 1.22 wakes the waiting thread, which frees the
/// request, and only then unlocks the request on the downloading one. As long as the woken thread
/// does not take the other's processor at once, it comes late enough. Without this, a third of the
/// hanging playlists ended the process.
void letDownloadsFinishFirst() noexcept;

}  // namespace xel
