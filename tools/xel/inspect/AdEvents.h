#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "inspect/ClientView.h"

namespace xel::inspect {

/// An event of one ad that is pinged when it happens.
struct AdEvent {
  std::string type;
  /// What reports it: seconds of stream time, on demand.
  std::vector<double> seconds;
  /// What reports it: texts of timed metadata, live.
  std::vector<std::string> tags;
  /// In the order of sending.
  std::vector<PingView> pings;

  bool isReported() const { return !seconds.empty() || !tags.empty(); }
};

/// The events of each ad of a document, in the order of its ads; for each ad all that are pinged,
/// in order of time.
std::vector<std::vector<AdEvent>> adEvents(const ClientView& view);

}  // namespace xel::inspect
