#pragma once

#include <memory>
#include <optional>
#include <string>

#include "xel/platform/Export.h"

namespace xel {

/// The facts about library, application and device that requests carry. Asked anew for each
/// request; nothing is cached.
///
/// Threads: main run loop. Errors: a fact that is not known is absent.
class XEL_EXPORT Environment {
 public:
  virtual ~Environment();
  /// The library's version, such as "1.0.0".
  virtual std::optional<std::string> libraryVersion() const = 0;
  /// A reverse-domain name, such as "com.example.player".
  virtual std::optional<std::string> applicationIdentifier() const = 0;
  virtual std::optional<std::string> applicationVersion() const = 0;
  virtual std::optional<std::string> operatingSystemName() const = 0;
  virtual std::optional<std::string> operatingSystemVersion() const = 0;
  virtual std::optional<std::string> hardwareModel() const = 0;
  /// A UUID as text (RFC 9562 section 4) in upper case.
  virtual std::string advertisingIdentifier() const = 0;
  virtual bool isAdvertisingTrackingEnabled() const = 0;
};

/// What only the host application knows.
struct HostFacts {
  std::optional<std::string> applicationIdentifier = {};
  std::optional<std::string> applicationVersion = {};
  /// A UUID as text, in either case. Absent, or not a UUID: the all-zero UUID with tracking off.
  std::optional<std::string> advertisingIdentifier = {};
  bool advertisingTrackingEnabled = false;
};

/// The host's facts, completed with what a Linux system tells of itself: operating system from
/// os-release(5), hardware model from the device tree, else DMI, else uname(2).
XEL_EXPORT std::shared_ptr<Environment> makeLinuxEnvironment(HostFacts facts);

}  // namespace xel
