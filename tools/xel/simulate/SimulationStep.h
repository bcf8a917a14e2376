#pragma once

#include <string>
#include <variant>
#include <vector>

#include "xel/simulation/CannedAdServer.h"

namespace xel::simulate {

// What happens in a simulated session, one after the other. Times and spans are seconds.

/// The stream plays on for so long.
struct PlayFor {
  double seconds;
};
/// The stream plays on to a stream time; does nothing where that lies behind.
struct PlayTo {
  double time;
};
struct SeekTo {
  double time;
};
/// Time passes, and the playhead stands still.
struct Pause {
  double seconds;
};
/// The span between two progress reports from now on.
struct Tick {
  double seconds;
};
/// A text of timed metadata ("TXXX") comes now.
struct Text {
  std::string text;
};
/// What requests for the document get from now on.
struct DocumentAnswer {
  enum class Outcome { answered, failed, neverAnswered };
  Outcome outcome = Outcome::answered;
  simulation::CannedAnswer answer = {};
};

using SimulationStep = std::variant<PlayFor, PlayTo, SeekTo, Pause, Tick, Text, DocumentAnswer>;

}  // namespace xel::simulate
