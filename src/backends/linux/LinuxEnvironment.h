#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "xel/platform/Environment.h"

namespace xel {

/// What a Linux system tells of itself.
///
/// The name of the operating system is os-release(5)'s ID: in a User-Agent it must be one token,
/// which NAME ("Debian GNU/Linux") is not.
struct SystemFacts {
  /// Reads the files below `root`, which is "/" but for tests.
  static SystemFacts read(const std::filesystem::path& root);

  std::optional<std::string> operatingSystemName;
  std::optional<std::string> operatingSystemVersion;
  std::optional<std::string> hardwareModel;
};

/// The host's facts, completed with the system's, which are read once: they do not change while
/// the process lives.
class LinuxEnvironment final : public Environment {
 public:
  LinuxEnvironment(HostFacts host, SystemFacts system);

  std::optional<std::string> libraryVersion() const override;
  std::optional<std::string> applicationIdentifier() const override;
  std::optional<std::string> applicationVersion() const override;
  std::optional<std::string> operatingSystemName() const override;
  std::optional<std::string> operatingSystemVersion() const override;
  std::optional<std::string> hardwareModel() const override;
  std::string advertisingIdentifier() const override;
  bool isAdvertisingTrackingEnabled() const override;

 private:
  /// The advertising identifier is canonical here, or absent.
  const HostFacts host_;
  const SystemFacts system_;
};

}  // namespace xel
