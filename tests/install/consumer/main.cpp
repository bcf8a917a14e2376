// A host application's test: one on-demand session with one ad, on the simulation kit.
#include <algorithm>
#include <iostream>

#include <xel/simulation/simulation.h>
#include <xel/xel.h>

int main() {
  using namespace xel::simulation;

  SimulatedPlatform platform;
  const auto answer = StreamInitAnswerBuilder::vod();
  auto document = StreamInfoBuilder::vod();
  document.addBreak("break", 0).addAd("ad", 10);
  platform.server().answer(platform.vodInitURL("source", "video"), {.body = answer.build()});
  platform.server().answer(answer.timeEventsURL.value(), {.body = document.build()});

  auto display = std::make_shared<ScriptedDisplay>();
  auto host = std::make_shared<RecordingDelegate>();
  auto manager = XELStreamManager::initWithVideoDisplay(display);
  manager->setDelegate(host);
  manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("source", "video"));
  platform.loop().runUntilIdle();
  display->play(0, 12);

  const auto& events = host->events();
  const bool started = std::any_of(events.begin(), events.end(),
                                   [](const auto& event) { return event.name == "adDidStart"; });
  for (const std::string& line : host->lines(RecordingDelegate::Countdowns::leftOut)) {
    std::cout << line << '\n';
  }
  return started && !platform.server().pings().empty() ? 0 : 1;
}
