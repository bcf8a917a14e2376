#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"

#include "backends/curl/CurlHTTPClient.h"
#include "backends/linux/AdvertisingIdentifier.h"

namespace xel {

Platform Platform::makeDefault(const DefaultPlatformOptions& options) {
  Platform platform;
  platform.log = makeStandardErrorLog();
  platform.mainRunLoop = options.mainRunLoop;
  if (!platform.mainRunLoop) platform.mainRunLoop = StandardRunLoop::main();
  platform.environment = makeLinuxEnvironment(options.host);
  platform.http = makeCurlHTTPClient({options.caFile, options.redirects}, platform.mainRunLoop);
  platform.services = options.services;

  const auto& identifier = options.host.advertisingIdentifier;
  if (identifier && !canonicalUUID(*identifier)) {
    platform.log->line(
        "The advertising identifier is not a UUID; continuing without one, with tracking off.");
  }
  return platform;
}

}  // namespace xel
