#include "xel/platform/Platform.h"

#include <utility>

namespace xel {
namespace {

/// The installed bundle; its members are null until one is installed. Never destroyed: what is
/// released while the process exits may still ask for it.
Platform& installed() {
  static Platform& platform = *new Platform;
  return platform;
}

}  // namespace

RunLoop::~RunLoop() = default;
Environment::~Environment() = default;
Log::~Log() = default;

const Platform& Platform::current() {
  if (!installed().http) install({});
  return installed();
}

void Platform::install(Platform platform) {
  if (!platform.http || !platform.mainRunLoop || !platform.environment || !platform.log) {
    DefaultPlatformOptions options;
    options.services = platform.services;
    options.mainRunLoop = platform.mainRunLoop;
    Platform defaults = makeDefault(options);
    if (!platform.http) platform.http = std::move(defaults.http);
    if (!platform.mainRunLoop) platform.mainRunLoop = std::move(defaults.mainRunLoop);
    if (!platform.environment) platform.environment = std::move(defaults.environment);
    if (!platform.log) platform.log = std::move(defaults.log);
  }
  std::swap(installed(), platform);
}

ScopedPlatform::ScopedPlatform(Platform platform) : earlier_(std::exchange(installed(), {})) {
  Platform::install(std::move(platform));
}

ScopedPlatform::~ScopedPlatform() { std::swap(installed(), earlier_); }

}  // namespace xel
