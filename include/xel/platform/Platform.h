#pragma once

#include <array>
#include <memory>
#include <string>

#include "xel/platform/Environment.h"
#include "xel/platform/Export.h"
#include "xel/platform/HTTPClient.h"
#include "xel/platform/Log.h"
#include "xel/platform/RedirectRule.h"
#include "xel/platform/RunLoop.h"

namespace xel {

/// Whom the library talks to. The defaults are reserved names (RFC 2606) that resolve nowhere: a
/// host application sets the ones it has been given.
struct Services {
  /// Host, or host and port, of the live stream-init endpoint; reached over https.
  std::string liveHost = "live.ssai.example";
  /// Host, or host and port, of the on-demand stream-init endpoint; reached over https.
  std::string vodHost = "vod.ssai.example";
  /// The ad server's ad-serving and ad-services domains: tracking URLs that hold one of them may
  /// be measurement URLs. An empty one counts for nothing.
  std::array<std::string, 2> measurementDomains = {"adserving.example", "adservices.example"};
};

/// What the default platform is made from; every member may be left out.
struct DefaultPlatformOptions {
  HostFacts host = {};
  Services services = {};
  /// A PEM file of the certificate authorities to trust; empty: the system's.
  std::string caFile = {};
  RedirectRule redirects = RedirectRule::notInward;
  /// The host's main run loop; null: `StandardRunLoop::main()`.
  std::shared_ptr<RunLoop> mainRunLoop = nullptr;
};

/// Everything that the library needs from outside, as one bundle.
///
/// The host application installs it once, before it uses anything else of the library. All members
/// are present in an installed bundle.
/// Threads: main run loop.
struct XEL_EXPORT Platform {
  std::shared_ptr<HTTPClient> http;
  std::shared_ptr<RunLoop> mainRunLoop;
  std::shared_ptr<Environment> environment;
  std::shared_ptr<Log> log;
  Services services;

  /// libcurl, the standard run loop, Linux facts and standard error. Where the system has no thread
  /// left for the HTTP client, every request of it fails.
  static Platform makeDefault(const DefaultPlatformOptions& options = {});

  /// The installed bundle; `makeDefault()` if none has been. Do not keep the reference.
  static const Platform& current();

  /// Replaces the bundle; a member that is null is taken from `makeDefault()`.
  static void install(Platform platform);
};

/// Installs a bundle for as long as it lives and puts the earlier one back; for tests and tools.
/// Scopes nest.
class XEL_EXPORT ScopedPlatform {
 public:
  explicit ScopedPlatform(Platform platform);
  ~ScopedPlatform();
  ScopedPlatform(const ScopedPlatform&) = delete;
  ScopedPlatform& operator=(const ScopedPlatform&) = delete;

 private:
  Platform earlier_;
};

}  // namespace xel
