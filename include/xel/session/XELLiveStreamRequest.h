#pragma once

#include <memory>
#include <string>
#include <utility>

#include "xel/session/XELStreamRequest.h"

/// A request for a live stream, named by its asset key.
class XEL_EXPORT XELLiveStreamRequest final : public XELStreamRequest {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Null, with a line in the diagnostic log, when the key is empty. The key goes into the URL
  /// path unescaped.
  static std::shared_ptr<XELLiveStreamRequest> initWithAssetKey(std::string assetKey);
  XELLiveStreamRequest(Token, std::string assetKey) : assetKey_(std::move(assetKey)) {}

  const std::string& assetKey() const noexcept { return assetKey_; }

  /// Asks the server for a pre-roll ahead of the stream; false until set.
  bool attemptPreroll() const noexcept { return attemptPreroll_; }
  void setAttemptPreroll(bool attempt) noexcept { attemptPreroll_ = attempt; }

 private:
  const std::string assetKey_;
  bool attemptPreroll_ = false;
};
