#pragma once

#include <cstdint>
#include <limits>

namespace xel {

/// Tells when playback that should go on has stopped for so long that it will not go on by itself.
///
/// All times are seconds; those of the steady clock are handed in.
class StallWatch {
 public:
  /// A stream with a known fault goes on while it has media left, and is over when it stands still
  /// this long.
  static constexpr double longestStandstill = 0.6;
  /// A server that has sent nothing for this long, while playback waits for it, has stopped
  /// answering. A stream that has played before has time for a second attempt.
  static constexpr double longestSilenceAtStart = 8;
  static constexpr double longestSilence = 13;

  /// Begins to watch anew: nothing has stood still so far.
  void restart(double now);
  /// @param arrivals grows with everything that arrives from the server.
  void see(double now, double position, std::uint64_t arrivals);

  bool isStandingStill() const noexcept { return now_ - moved_ >= longestStandstill; }
  bool isSilentFor(double seconds) const noexcept {
    return now_ - moved_ >= seconds && now_ - heard_ >= seconds;
  }

 private:
  double now_ = 0;
  double moved_ = 0;
  double heard_ = 0;
  double position_ = std::numeric_limits<double>::quiet_NaN();
  std::uint64_t arrivals_ = 0;
};

}  // namespace xel
