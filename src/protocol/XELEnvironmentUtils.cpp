#include "protocol/XELEnvironmentUtils.h"

#include "xel/platform/Platform.h"

#include "platform/Text.h"

namespace {

const xel::Environment& environment() { return *xel::Platform::current().environment; }

}  // namespace

std::string XELEnvironmentUtils::sdkVersion() {
  return xel::fillTemplate("t.%@", {environment().libraryVersion()});
}

std::optional<std::string> XELEnvironmentUtils::appName() {
  return environment().applicationIdentifier();
}

std::string XELEnvironmentUtils::appVersion() {
  return environment().applicationVersion().value_or("");
}

std::optional<std::string> XELEnvironmentUtils::submodel() { return environment().hardwareModel(); }

std::string XELEnvironmentUtils::advertisingIdentifier() {
  return environment().advertisingIdentifier();
}

bool XELEnvironmentUtils::isAdvertisingTrackingEnabled() {
  return environment().isAdvertisingTrackingEnabled();
}

std::string XELEnvironmentUtils::userAgent() {
  return xel::fillTemplate("XELtvOS/%@ %@/%@ %@/%@",
                           {sdkVersion(), environment().operatingSystemName(),
                            environment().operatingSystemVersion(), appName(), appVersion()});
}

std::string XELEnvironmentUtils::sdkVersionWithAppName() {
  return xel::fillTemplate("%@/%@", {sdkVersion(), appName()});
}
