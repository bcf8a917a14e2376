#pragma once

#include <optional>

namespace xel {

/// How far a stream has been played. All times in seconds.
struct PlayProgress {
  /// Stream time.
  double position = 0;
  /// The end of the stream as far as it is known, in stream time.
  double knownEnd = 0;
  /// Whether `knownEnd` is final.
  bool isEndFinal = false;
  bool isPaused = false;
  /// `position` as content time; absent where the stream has none, or it is not known.
  std::optional<double> contentTime = std::nullopt;
};

}  // namespace xel
