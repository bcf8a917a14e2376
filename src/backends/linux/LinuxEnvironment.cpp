#include "backends/linux/LinuxEnvironment.h"

#include <utility>

#include "backends/linux/AdvertisingIdentifier.h"

namespace xel {
namespace {

HostFacts checked(HostFacts host) {
  if (host.advertisingIdentifier) {
    host.advertisingIdentifier = canonicalUUID(*host.advertisingIdentifier);
  }
  if (!host.advertisingIdentifier) host.advertisingTrackingEnabled = false;
  return host;
}

}  // namespace

LinuxEnvironment::LinuxEnvironment(HostFacts host, SystemFacts system)
    : host_(checked(std::move(host))), system_(std::move(system)) {}

std::optional<std::string> LinuxEnvironment::libraryVersion() const { return XEL_VERSION; }

std::optional<std::string> LinuxEnvironment::applicationIdentifier() const {
  return host_.applicationIdentifier;
}

std::optional<std::string> LinuxEnvironment::applicationVersion() const {
  return host_.applicationVersion;
}

std::optional<std::string> LinuxEnvironment::operatingSystemName() const {
  return system_.operatingSystemName;
}

std::optional<std::string> LinuxEnvironment::operatingSystemVersion() const {
  return system_.operatingSystemVersion;
}

std::optional<std::string> LinuxEnvironment::hardwareModel() const { return system_.hardwareModel; }

std::string LinuxEnvironment::advertisingIdentifier() const {
  return host_.advertisingIdentifier.value_or(std::string(zeroUUID));
}

bool LinuxEnvironment::isAdvertisingTrackingEnabled() const {
  return host_.advertisingTrackingEnabled;
}

std::shared_ptr<Environment> makeLinuxEnvironment(HostFacts facts) {
  return std::make_shared<LinuxEnvironment>(std::move(facts), SystemFacts::read("/"));
}

}  // namespace xel
