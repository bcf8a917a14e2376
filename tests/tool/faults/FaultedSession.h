#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "serve/Fault.h"
#include "serve/StreamRequestCheck.h"
#include "tool/faults/TurnLoop.h"

namespace xel::serve {

/// What became of a session, in the words of docs/faults.md.
struct Outcome {
  std::string heard;
  std::string seen;
  std::string adsNoticed;
  std::string pings;
};

struct FaultReport {
  Outcome outcome;
  std::size_t struck = 0;
  /// Requests whose result came in the turn in which they were sent: somebody had waited for it.
  int waitedFor = 0;
  /// A line for each event whose pings were not all either accepted or failed and logged, for each
  /// other line of the log, and for each ad that was not played from start to complete.
  std::vector<std::string> unaccounted;
  TurnCosts turns;
};

/// Plays a stream to its end, or until it fails, from a server with the fault: the library with its
/// own HTTP client, and a clock without limit of speed as player.
///
/// A live document is polled before the first playlist and each eighth one after it. A request that
/// the fault leaves without an answer is given up early; the report tells of the time-out that it
/// was sent with.
FaultReport playWithFault(StreamKind kind, const Fault& fault);

}  // namespace xel::serve
