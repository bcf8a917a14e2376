#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "serve/Ledger.h"
#include "serve/PromisedPings.h"

namespace xel::serve {

/// What must have become of the ads of each session.
enum class Expectation {
  complete,  ///< Each has been played from start to end: each of its pings came once, in order.
  started,   ///< The same for those that started; of the others no ping came.
};

/// A session whose stream request was answered.
struct SessionRecord {
  std::size_t number = 0;
  /// Such as "on demand".
  std::string kind;
  /// The document that the player got last; empty: none.
  std::string document;
  /// The start of its tracking URLs' path, such as "/track/1/".
  std::string trackingPath;
  PingSender sender;
};

struct PingVerdict {
  /// One line for each session.
  std::vector<std::string> sessions;
  /// One line for each difference.
  std::vector<std::string> differences;
};

/// Pings go out side by side, so those that came within this many seconds have no order.
inline constexpr double unorderedSeconds = 0.5;

/// Holds what was received against what the sessions' documents promise. A ping that is sent anew
/// because a fault reset its connection or redirected it counts once.
PingVerdict checkPings(const std::vector<SessionRecord>& sessions,
                       const std::vector<Ledger::Entry>& ledger, Expectation expectation);

}  // namespace xel::serve
