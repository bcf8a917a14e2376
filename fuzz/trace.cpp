// Traces: whatever the bytes, reading ends, a fault names its line, and what can be read can be
// replayed, every time with the same result.

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include "xel/simulation/TraceReplay.h"

#include "fuzz/support/Require.h"

namespace {

using namespace xel::simulation;
using xel::fuzz::require;

std::size_t lineCount(const std::string& trace) {
  return 1 + static_cast<std::size_t>(std::count(trace.begin(), trace.end(), '\n'));
}

void checkFault(const std::optional<TraceFault>& fault, const std::string& trace) {
  if (!fault) return;
  const bool isBlank = trace.find_first_not_of(" \t\r\n") == std::string::npos;
  require(isBlank || (fault->line >= 1 && fault->line <= lineCount(trace)),
          "a fault that does not name its line");
  require(!fault->description.empty(), "a fault that does not say what is wrong");
}

std::string told(const TraceReplayResult& result) {
  std::string text = std::to_string(result.delegateCalls) + ' ' + std::to_string(result.pings) +
                     ' ' + std::to_string(result.differenceCount) + ' ' +
                     std::to_string(result.cutOffLine);
  for (const auto& difference : result.differences) text += '\n' + difference.text();
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string trace(reinterpret_cast<const char*>(data), size);
  std::istringstream in(trace);
  TraceReader reader(in);
  std::size_t number = reader.lineNumber();
  while (const auto line = reader.next()) {
    require(line->number > number && line->number <= lineCount(trace),
            "a line with another's number");
    require(!line->kind.empty() || line->value.has("kind"), "a line without a kind");
    number = line->number;
  }
  checkFault(reader.fault(), trace);

  std::istringstream first(trace), second(trace);
  const auto result = replayTrace(first);
  require(result.fault.has_value() == reader.fault().has_value(),
          "a replay that reads otherwise than the reader");
  checkFault(result.fault, trace);
  require(told(result) == told(replayTrace(second)), "a replay that is not the same again");
  return 0;
}
