#pragma once

namespace xel {

/// Keeps libsoup 3.2 from crashing when a download is cancelled in the moment in which its answer
/// arrives, as a seek or the end of a pipeline does.
///
/// libsoup then ends the message first and closes the stream of its answer afterwards, which asks
/// the message for what it no longer has. From this call on, such a stream closes without asking.
/// To be called before downloads may be cancelled, again and again: it takes effect, for the whole
/// process, once libsoup has had an answer. Threads: any.
void guardCancelledDownloads() noexcept;

}  // namespace xel
