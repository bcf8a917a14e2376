#pragma once

#include <optional>
#include <string>

#include "play/PlayEvent.h"

namespace xel {

/// The event as one line for people; absent for the countdown, which comes with every tick.
std::optional<std::string> toLine(double time, const PlayEvent& event);

}  // namespace xel
