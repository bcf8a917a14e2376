#pragma once

#include <cmath>
#include <memory>
#include <vector>

#include "xel/model/XELCuepoint.h"
#include "xel/session/XELStreamManager.h"

#include "fuzz/support/Require.h"

namespace xel::fuzz {

using Cuepoints = std::vector<std::shared_ptr<XELCuepoint>>;

/// Whether conversions with these cue points are exact and can be undone: the breaks begin at 0 or
/// later, end after they begin, stand apart or touch, and are given in whole eighths of a second.
inline bool areSane(const Cuepoints& cuepoints) {
  double end = 0;
  for (const auto& cuepoint : cuepoints) {
    for (const double time : {cuepoint->startTime(), cuepoint->endTime()}) {
      if (!(time >= end && time < 1e9) || time * 8 != std::floor(time * 8)) return false;
      end = time;
    }
  }
  return true;
}

/// Requires what must hold of the conversions at one time, and between it and the next eighth.
/// @param cuepoints sane.
/// @param time whole eighths of a second.
inline void requireConversions(const XELStreamManager& manager, const Cuepoints& cuepoints,
                               double time) {
  const double step = 0.125;
  const double content = manager.contentTimeForStreamTime(time);
  const double advanced = manager.contentTimeForStreamTime(time + step) - content;
  require(content >= 0 && content <= time, "a content time outside the stream");
  require(manager.streamTimeForContentTime(time + step) - manager.streamTimeForContentTime(time) >=
              step,
          "stream time that does not grow with content time");
  bool isInBreak = false;
  for (const auto& cuepoint : cuepoints) {
    isInBreak |= cuepoint->startTime() <= time && time < cuepoint->endTime();
  }
  require(advanced == (isInBreak ? 0 : step), "content time that does not go with the stream");
  require(isInBreak || manager.streamTimeForContentTime(content) == time,
          "a content time that does not lead back to its stream time");
  const auto previous = manager.previousCuepointForStreamTime(time);
  for (const auto& cuepoint : cuepoints) {
    const bool isEarlier = cuepoint->startTime() < time;
    require(!isEarlier || (previous && cuepoint->startTime() <= previous->startTime()),
            "a cue point that is not the previous one");
  }
}

}  // namespace xel::fuzz
