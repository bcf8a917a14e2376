#include "xel/simulation/TraceReplay.h"

#include <algorithm>

#include "simulation/trace/ReplayedSession.h"
#include "simulation/trace/TraceStep.h"

namespace xel::simulation {

std::string TraceDifference::text() const {
  return "line " + std::to_string(line) + ": expected " + expected + ", got " + got;
}

TraceReplayResult replayTrace(std::istream& in, std::size_t maxDifferences) {
  TraceReplayResult result;
  TraceReader reader(in);
  if (!reader.fault()) {
    ReplayedSession session(reader.header());
    TraceStep::Source source(reader);
    while (auto step = source.next()) {
      session.run(*step);
      const bool isOpen = source.isAtEnd() && !source.hasEnd();
      const auto differences = step->differences(isOpen);
      const auto room = maxDifferences - std::min(maxDifferences, result.differences.size());
      result.differences.insert(
          result.differences.end(), differences.begin(),
          differences.begin() + static_cast<std::ptrdiff_t>(std::min(room, differences.size())));
      result.differenceCount += differences.size();
      result.delegateCalls += step->delegateCalls();
      result.pings += step->pings();
    }
  }
  result.fault = reader.fault();
  if (reader.isCutOff()) result.cutOffLine = reader.lineNumber();
  return result;
}

}  // namespace xel::simulation
