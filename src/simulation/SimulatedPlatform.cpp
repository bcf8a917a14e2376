#include "xel/simulation/SimulatedPlatform.h"

#include <utility>

namespace xel::simulation {

FixedEnvironment::FixedEnvironment() = default;
FixedEnvironment::~FixedEnvironment() = default;
RecordingLog::RecordingLog() = default;
RecordingLog::~RecordingLog() = default;

SimulatedPlatform::SimulatedPlatform(Services services)
    : loop_(std::make_shared<VirtualRunLoop>()),
      server_(std::make_shared<CannedAdServer>(loop_)),
      environment_(std::make_shared<FixedEnvironment>()),
      log_(std::make_shared<RecordingLog>()),
      services_(std::move(services)),
      installed_(Platform{server_, loop_, environment_, log_, services_}) {}

SimulatedPlatform::~SimulatedPlatform() {
  // What still waits may own a stream, which must end on the platform that it began on.
  server_->clear();
  loop_->clear();
}

std::string SimulatedPlatform::liveInitURL(std::string_view assetKey) const {
  return "https://" + services_.liveHost + "/ssai/event/" + std::string(assetKey) + "/streams";
}

std::string SimulatedPlatform::vodInitURL(std::string_view contentSourceID,
                                          std::string_view videoID) const {
  return "https://" + services_.vodHost + "/ondemand/hls/content/" + std::string(contentSourceID) +
         "/vid/" + std::string(videoID) + "/streams";
}

}  // namespace xel::simulation
