#pragma once

namespace xel {

class CurlThread;

/// The I/O threads of the process, so that they can be stopped when it exits: a transfer that
/// outlives the TLS library's own exit handler would use what is gone. Threads: any.
class LiveThreads {
 public:
  /// Initialises libcurl at the first call. False if the process is exiting, and `thread` must not
  /// start.
  static bool add(CurlThread& thread);
  static void remove(CurlThread& thread);
};

}  // namespace xel
