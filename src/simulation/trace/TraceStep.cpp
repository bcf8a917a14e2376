#include "simulation/trace/TraceStep.h"

#include <algorithm>
#include <array>
#include <utility>

#include "simulation/trace/SequenceDiff.h"
#include "simulation/trace/TraceText.h"

namespace xel::simulation {
namespace {

/// More than any input has; what a trace has beyond that is taken as a step without input.
constexpr std::size_t maxEntries = 5000;

bool isInput(std::string_view kind) {
  constexpr std::array<std::string_view, 7> inputs = {
      "httpResult", "ready", "progress", "metadata", "failure", "timerFire", "release"};
  return std::find(inputs.begin(), inputs.end(), kind) != inputs.end();
}

std::size_t insideOf(const TraceLine& line) {
  return static_cast<std::size_t>(
      std::max<std::int64_t>(line.value["inside"].integer().value_or(0), 0));
}

}  // namespace

std::optional<std::size_t> TraceStep::take(TraceOutput output) {
  const auto first = [&](auto isWanted) -> std::optional<std::size_t> {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
      return entry.output && !entry.isDone && isWanted(*entry.output);
    });
    if (found == entries_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - entries_.begin());
  };
  auto place = first([&](const TraceOutput& recorded) { return recorded == output; });
  if (place) {
    entries_[*place].isDone = true;
  } else {
    place = first([&](const TraceOutput& recorded) { return recorded.name == output.name; });
  }
  taken_.push_back(std::move(output));
  return place;
}

const TraceLine* TraceStep::nextInside(std::size_t place, std::size_t openCalls) {
  for (auto next = place + 1; next < entries_.size(); ++next) {
    Entry& entry = entries_[next];
    if (entry.isDone) continue;
    if (entry.output || entry.inside != openCalls) break;
    entry.isDone = true;
    return &entry.line;
  }
  return nullptr;
}

const TraceLine* TraceStep::nextLeftOver() {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [](const Entry& entry) {
    return !entry.output && !entry.isDone;
  });
  if (found == entries_.end()) return nullptr;
  found->isDone = true;
  return &found->line;
}

std::vector<TraceDifference> TraceStep::differences(bool isOpen) const {
  std::vector<const TraceOutput*> recorded;
  std::vector<std::size_t> lines;
  for (const Entry& entry : entries_) {
    if (!entry.output) continue;
    recorded.push_back(&*entry.output);
    lines.push_back(entry.line.number);
  }
  lines.push_back(lastLine_ + 1);

  std::vector<TraceDifference> differences;
  const auto changes = diff(recorded.size(), taken_.size(), [&](std::size_t a, std::size_t b) {
    return *recorded[a] == taken_[b];
  });
  for (const auto& [place, expected, got] : changes) {
    if (isOpen && !expected && place == recorded.size()) continue;
    const auto* const expectedOutput = expected ? recorded[*expected] : nullptr;
    const auto* const gotOutput = got ? &taken_[*got] : nullptr;
    auto [expectedText, gotText] = describe(expectedOutput, gotOutput);
    differences.push_back({lines[place], std::move(expectedText), std::move(gotText)});
  }
  return differences;
}

std::size_t TraceStep::delegateCalls() const {
  return static_cast<std::size_t>(std::count_if(
      entries_.begin(), entries_.end(),
      [](const Entry& entry) { return entry.output && entry.output->kind == "delegate"; }));
}

std::size_t TraceStep::pings() const {
  return static_cast<std::size_t>(std::count_if(
      entries_.begin(), entries_.end(),
      [](const Entry& entry) { return entry.output && entry.output->name.starts_with("ping "); }));
}

std::optional<TraceStep> TraceStep::Source::next() {
  TraceStep step;
  if (!std::exchange(hasBegun_, true)) {
    ahead_ = reader_.next();
  } else if (!ahead_) {
    return std::nullopt;
  } else if (isInput(ahead_->kind)) {
    step.lastLine_ = ahead_->number;
    step.input_ = std::exchange(ahead_, reader_.next());
  }
  for (; ahead_ && step.entries_.size() < maxEntries; ahead_ = reader_.next()) {
    const auto inside = insideOf(*ahead_);
    const bool isDoing = isOutput(ahead_->kind);
    hasEnd_ = hasEnd_ || ahead_->kind == "end";
    if (isInput(ahead_->kind) && inside == 0) break;
    if (!isDoing && !isInput(ahead_->kind)) continue;
    step.lastLine_ = ahead_->number;
    Entry entry;
    entry.inside = inside;
    if (isDoing) {
      entry.output = TraceOutput::fromLine(*ahead_);
      entry.id = static_cast<std::uint64_t>(ahead_->value["id"].integer().value_or(0));
      ahead_->value = {};
    }
    entry.line = std::move(*ahead_);
    step.entries_.push_back(std::move(entry));
  }
  return step;
}

}  // namespace xel::simulation
