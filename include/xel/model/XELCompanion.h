#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "xel/model/TrackedEvents.h"

/// A companion ad: a static resource to show beside the video. Its tracking URLs are the host's to
/// send; the library never does.
///
/// Ownership: shared; the ad keeps it alive. Not copyable; equality is identity.
/// Threads: main run loop. Errors: no operation fails.
class XEL_EXPORT XELCompanion final : public xel::TrackedEvents {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// An empty companion, for the library's own parsers. Never null.
  static std::shared_ptr<XELCompanion> initPrivate();
  explicit XELCompanion(Token) {}

  /// The text of the VAST StaticResource element, as it stands.
  const std::optional<std::string>& staticResourceURL() const noexcept {
    return staticResourceURL_;
  }
  void setStaticResourceURL(std::optional<std::string> url) { staticResourceURL_ = std::move(url); }

  const std::optional<std::string>& apiFramework() const noexcept { return apiFramework_; }
  void setApiFramework(std::optional<std::string> framework) {
    apiFramework_ = std::move(framework);
  }

  /// Pixels; 0 when the document gives no number.
  std::int64_t width() const noexcept { return width_; }
  void setWidth(std::int64_t width) noexcept { width_ = width; }

  /// Pixels; 0 when the document gives no number.
  std::int64_t height() const noexcept { return height_; }
  void setHeight(std::int64_t height) noexcept { height_ = height; }

 private:
  std::optional<std::string> staticResourceURL_;
  std::optional<std::string> apiFramework_;
  std::int64_t width_ = 0;
  std::int64_t height_ = 0;
};
