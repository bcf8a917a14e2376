#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "xel/simulation/TraceReader.h"
#include "xel/simulation/TraceReplay.h"

#include "simulation/trace/TraceOutput.h"

namespace xel::simulation {

/// One thing that the library is told, with all that is recorded until the next; and what it does
/// when it is told so again.
class TraceStep {
 public:
  /// The next step of a trace.
  class Source;

  /// What the step begins with; absent for the first, which begins with the request.
  const std::optional<TraceLine>& input() const noexcept { return input_; }

  /// The library does something now.
  /// @return where it is recorded; absent where it is not. The same, or else the most alike.
  std::optional<std::size_t> take(TraceOutput output);
  /// The request's or timer's number in the trace.
  std::uint64_t idAt(std::size_t place) const { return entries_[place].id; }

  /// What the library is told next inside the call that is recorded there, with `openCalls` calls
  /// under way; null when there is nothing more. Each is given once.
  const TraceLine* nextInside(std::size_t place, std::size_t openCalls);
  /// What it is told inside a call that it did not make; null when there is nothing more.
  const TraceLine* nextLeftOver();

  /// What the library did otherwise.
  /// @param isOpen whether what it did beyond the step's end does not count.
  std::vector<TraceDifference> differences(bool isOpen) const;

  std::size_t delegateCalls() const;
  std::size_t pings() const;

 private:
  struct Entry {
    /// Without value for an output.
    TraceLine line;
    /// Absent for an input.
    std::optional<TraceOutput> output;
    std::uint64_t id = 0;
    std::size_t inside = 0;
    bool isDone = false;
  };

  std::optional<TraceLine> input_;
  std::vector<Entry> entries_;
  std::vector<TraceOutput> taken_;
  std::size_t lastLine_ = 1;
};

/// Cuts a trace into steps.
class TraceStep::Source {
 public:
  explicit Source(TraceReader& reader) : reader_(reader) {}

  /// Absent at the trace's end.
  std::optional<TraceStep> next();
  /// Whether the step that was given last is the last one.
  bool isAtEnd() const noexcept { return hasBegun_ && !ahead_; }
  /// Whether the trace tells of the session's end.
  bool hasEnd() const noexcept { return hasEnd_; }

 private:
  TraceReader& reader_;
  bool hasBegun_ = false;
  bool hasEnd_ = false;
  std::optional<TraceLine> ahead_;
};

}  // namespace xel::simulation
