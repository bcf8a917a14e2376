#pragma once

namespace xel {

/// To be called on the threads that wait for GStreamer's HLS downloads.
///
/// When a playlist cannot be fetched, GStreamer 1.22 wakes the waiting thread, which frees the
/// request, and only then unlocks the request on the downloading one. Scheduled as batch work, the
/// woken thread does not take the other's processor at once, and comes late enough; this is a
/// matter of likelihood. Without it, a third of the hanging playlists ended the process. The thread
/// stays so when GLib's pool gives it other work.
void letDownloadsFinishFirst() noexcept;

}  // namespace xel
