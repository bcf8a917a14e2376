#pragma once

#include <string>
#include <vector>

#include "serve/PlaylistWriter.h"
#include "serve/StreamRequestCheck.h"

namespace xel::serve {

/// An ad break of a generated stream. Seconds of stream time.
struct PlannedBreak {
  std::string key;
  double start;
  std::vector<double> adDurations;

  double duration() const;
};

/// What a generated stream holds.
struct StreamPlan {
  /// Seconds.
  double duration;
  std::vector<PlannedBreak> breaks;
};

/// The pre-roll of live streams that are asked for one.
const StreamPlan& prerollPlan();
/// Of a stream without media: its segments are only named.
StreamPlan namedPlan(StreamKind kind, double liveDuration);
/// Of a stream whose parts the media library has.
StreamPlan mediaPlan(StreamKind kind, double liveDuration);

/// Each ad's key is that of its break with "-ad-" and its number from 1.
std::string adKey(const PlannedBreak& planned, std::size_t index);
/// The texts that mark the events of the plan's ads in a live stream, in order of time.
std::vector<StreamText> textsOf(const StreamPlan& plan);

}  // namespace xel::serve
