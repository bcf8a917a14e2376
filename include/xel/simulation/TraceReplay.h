#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "xel/platform/Export.h"
#include "xel/simulation/TraceReader.h"

namespace xel::simulation {

/// One thing that the library did otherwise than recorded. For people.
struct XEL_EXPORT TraceDifference {
  /// Of the line in the trace, from 1; where the library did more than is recorded, of the line
  /// before which it did.
  std::size_t line = 0;
  /// What is recorded, such as "adDidStart ad-2"; "nothing" where the library did more.
  std::string expected = {};
  /// What the library did; "nothing" where it did less.
  std::string got = {};

  /// "line 212: expected adDidStart ad-2, got nothing".
  std::string text() const;
};

/// What came of a replay.
struct XEL_EXPORT TraceReplayResult {
  /// How many the trace has, as far as it could be read.
  std::size_t delegateCalls = 0;
  std::size_t pings = 0;

  /// How many there are; the first of them follow.
  std::size_t differenceCount = 0;
  std::vector<TraceDifference> differences = {};

  /// Present where the trace could not be read to its end. What comes before was replayed.
  std::optional<TraceFault> fault = {};
  /// Of a last line that was left out because its end is missing; 0 for a whole trace.
  std::size_t cutOffLine = 0;

  bool isIdentical() const noexcept { return differenceCount == 0 && !fault; }
};

/// Runs the library through a recorded session once more, without network, player or wait, and
/// compares what it does with what is recorded: every delegate call with all that it carries, every
/// ping and other request, every load and timer.
///
/// Each thing that the library was told is told again, in order and inside the same calls; time has
/// no part in it. Log lines and notes are not compared, nor is the number that each process draws
/// for its stream requests. Where a trace has no end, as after a crash, what the library does after
/// its last line is no difference.
///
/// Installs a platform of its own meanwhile.
/// Threads: main run loop; no other session may be under way. Errors: any bytes may come.
/// @param in binary.
/// @param maxDifferences how many of them to describe.
XEL_EXPORT TraceReplayResult replayTrace(std::istream& in, std::size_t maxDifferences = 20);

}  // namespace xel::simulation
