#pragma once

#include <cstdio>
#include <string>
#include <utility>

#include "xel/simulation/JSONWriter.h"

#include "play/OutputFilter.h"
#include "play/PlayView.h"

namespace xel {

/// Adds the event's name, under "event", and what it carries.
void addMembers(simulation::JSONWriter& line, const PlayEvent& event);

/// The event as one JSON object, without a line end. Numbers read back exactly; what is not a
/// number in JSON is null, and bytes that are not UTF-8 become U+FFFD.
std::string toJSON(double time, const PlayEvent& event, const OutputFilter& filter = nullptr);

/// One JSON object a line, flushed, for programs.
class JSONLines final : public PlayView {
 public:
  /// @param out stays open for as long as the view lives.
  JSONLines(std::FILE* out, OutputFilter filter) : out_(out), filter_(std::move(filter)) {}
  void show(double time, const PlayEvent& event) override;

 private:
  std::FILE* const out_;
  const OutputFilter filter_;
};

}  // namespace xel
