#include "bench/Session.h"

#include "xel/simulation/StreamInitAnswerBuilder.h"

namespace xel::bench {

World::World(const std::string& document)
    : installed({std::make_shared<AnsweringServer>(
                     loop, simulation::StreamInitAnswerBuilder::vod().build(), document),
                 loop,
                 std::make_shared<simulation::FixedEnvironment>(),
                 std::make_shared<simulation::RecordingLog>(),
                 {}}) {}

VODSession::VODSession(World& world) {
  manager->setDelegate(host);
  manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("c", "v"));
  world.loop->runUntilIdle();
  display->reportReady();
}

}  // namespace xel::bench
