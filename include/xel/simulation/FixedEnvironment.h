#pragma once

#include <optional>
#include <string>

#include "xel/platform/Environment.h"
#include "xel/platform/Export.h"

namespace xel::simulation {

/// Facts that are the same on every machine; set what a test is about.
class XEL_EXPORT FixedEnvironment final : public Environment {
 public:
  FixedEnvironment();
  ~FixedEnvironment() override;

  std::optional<std::string> version = "1.2.3";
  std::optional<std::string> application = "com.example.player";
  std::optional<std::string> applicationRelease = "4.5";
  std::optional<std::string> system = "ExampleOS";
  std::optional<std::string> systemRelease = "6.7";
  std::optional<std::string> model = "Box8,9";
  std::string advertisingID = "01234567-89AB-4CDE-8F01-23456789ABCD";
  bool trackingEnabled = true;

  std::optional<std::string> libraryVersion() const override { return version; }
  std::optional<std::string> applicationIdentifier() const override { return application; }
  std::optional<std::string> applicationVersion() const override { return applicationRelease; }
  std::optional<std::string> operatingSystemName() const override { return system; }
  std::optional<std::string> operatingSystemVersion() const override { return systemRelease; }
  std::optional<std::string> hardwareModel() const override { return model; }
  std::string advertisingIdentifier() const override { return advertisingID; }
  bool isAdvertisingTrackingEnabled() const override { return trackingEnabled; }
};

}  // namespace xel::simulation
