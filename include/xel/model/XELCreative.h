#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "xel/model/TrackedEvents.h"

/// One creative of an ad: its identity, its place in the sequence, its own tracking URLs.
///
/// Ownership: shared; the ad keeps it alive. Not copyable; equality is identity. Do not change it
/// after its ad has been handed out. Threads: main run loop. Errors: no operation fails.
class XEL_EXPORT XELCreative final : public xel::TrackedEvents {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// A creative that is not linear, with sequence 0 and nothing else set. Never null.
  static std::shared_ptr<XELCreative> init();
  explicit XELCreative(Token) {}

  bool isLinear() const noexcept { return isLinear_; }
  void setIsLinear(bool isLinear) noexcept { isLinear_ = isLinear; }

  /// The "id" of the VAST Creative element.
  const std::optional<std::string>& adID() const noexcept { return adID_; }
  void setAdID(std::optional<std::string> adID) { adID_ = std::move(adID); }

  /// The "idValue" of the VAST UniversalAdId element, or else its trimmed text.
  const std::optional<std::string>& universalAdIdValue() const noexcept {
    return universalAdIdValue_;
  }
  void setUniversalAdIdValue(std::optional<std::string> value) {
    universalAdIdValue_ = std::move(value);
  }

  const std::optional<std::string>& universalAdIdRegistry() const noexcept {
    return universalAdIdRegistry_;
  }
  void setUniversalAdIdRegistry(std::optional<std::string> registry) {
    universalAdIdRegistry_ = std::move(registry);
  }

  /// The "sequence" of the VAST Creative element; 0 when it has none.
  std::int64_t sequence() const noexcept { return sequence_; }
  void setSequence(std::int64_t sequence) noexcept { sequence_ = sequence; }

 private:
  bool isLinear_ = false;
  std::optional<std::string> adID_;
  std::optional<std::string> universalAdIdValue_;
  std::optional<std::string> universalAdIdRegistry_;
  std::int64_t sequence_ = 0;
};
