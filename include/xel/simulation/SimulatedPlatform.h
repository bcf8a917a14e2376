#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "xel/platform/Export.h"
#include "xel/platform/Platform.h"
#include "xel/simulation/CannedAdServer.h"
#include "xel/simulation/FixedEnvironment.h"
#include "xel/simulation/RecordingLog.h"
#include "xel/simulation/VirtualRunLoop.h"

namespace xel::simulation {

/// A whole platform of the kit's parts, installed for as long as it lives.
///
/// Make it first in a test and let it go last. Threads: main run loop.
class XEL_EXPORT SimulatedPlatform final {
 public:
  explicit SimulatedPlatform(Services services = {});
  ~SimulatedPlatform();
  SimulatedPlatform(const SimulatedPlatform&) = delete;
  SimulatedPlatform& operator=(const SimulatedPlatform&) = delete;

  VirtualRunLoop& loop() const noexcept { return *loop_; }
  CannedAdServer& server() const noexcept { return *server_; }
  FixedEnvironment& environment() const noexcept { return *environment_; }
  RecordingLog& log() const noexcept { return *log_; }

  /// Where a live stream request is sent.
  std::string liveInitURL(std::string_view assetKey) const;
  /// Where an on-demand stream request is sent.
  std::string vodInitURL(std::string_view contentSourceID, std::string_view videoID) const;

 private:
  const std::shared_ptr<VirtualRunLoop> loop_;
  const std::shared_ptr<CannedAdServer> server_;
  const std::shared_ptr<FixedEnvironment> environment_;
  const std::shared_ptr<RecordingLog> log_;
  const Services services_;
  const ScopedPlatform installed_;
};

}  // namespace xel::simulation
