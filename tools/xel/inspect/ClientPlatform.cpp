#include "inspect/ClientPlatform.h"

#include "xel/session/XELVODStreamRequest.h"

namespace xel::inspect {
namespace {

constexpr auto streamName = "inspected";

/// The hosts of the kit, and the measurement domains that are given.
Services servicesFrom(const ClientFacts& facts) {
  Services services;
  services.measurementDomains = facts.measurementDomains;
  return services;
}

}  // namespace

ClientPlatform::ClientPlatform(const ClientFacts& facts)
    : manifestSuffix_(facts.manifestSuffix), platform_(servicesFrom(facts)) {
  auto& environment = platform_.environment();
  environment.version = facts.libraryVersion;
  environment.application = facts.applicationIdentifier;
}

void ClientPlatform::answerNext(const std::string& answer) const {
  server().answer(platform_.vodInitURL(streamName, streamName), {200, answer});
}

ClientSession::ClientSession(const ClientPlatform& platform)
    : display(std::make_shared<simulation::ScriptedDisplay>()),
      delegate(std::make_shared<simulation::RecordingDelegate>()),
      manager(XELStreamManager::initWithVideoDisplay(display)) {
  const auto request = XELVODStreamRequest::initWithContentSourceID_videoID(streamName, streamName);
  request->setManifestURLSuffix(platform.manifestSuffix());
  manager->setDelegate(delegate);
  manager->requestStream(request);
  platform.loop().runUntilIdle();
}

}  // namespace xel::inspect
