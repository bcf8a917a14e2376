#pragma once

#include <optional>
#include <string>

/// The environment's facts in the form in which requests carry them. Nothing is cached.
///
/// Threads: main run loop. Errors: no operation fails; a missing fact reads "(null)" in a
/// composed text.
class XELEnvironmentUtils final {
 public:
  XELEnvironmentUtils() = delete;

  /// Such as "t.1.0.0".
  static std::string sdkVersion();
  static std::optional<std::string> appName();
  /// Empty when the application has none.
  static std::string appVersion();
  static std::optional<std::string> submodel();
  static std::string advertisingIdentifier();
  static bool isAdvertisingTrackingEnabled();
  /// The "User-Agent" of every request.
  static std::string userAgent();
  /// Library version and application identifier, such as "t.1.0.0/com.example.player".
  static std::string sdkVersionWithAppName();
};
