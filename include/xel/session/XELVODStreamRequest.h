#pragma once

#include <memory>
#include <string>
#include <utility>

#include "xel/session/XELStreamRequest.h"

/// A request for an on-demand stream, named by a content source and a video within it.
class XEL_EXPORT XELVODStreamRequest final : public XELStreamRequest {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Null, with a line in the diagnostic log, when either identifier is empty. The identifiers go
  /// into the URL path unescaped.
  static std::shared_ptr<XELVODStreamRequest> initWithContentSourceID_videoID(
      std::string contentSourceID, std::string videoID);
  XELVODStreamRequest(Token, std::string contentSourceID, std::string videoID)
      : contentSourceID_(std::move(contentSourceID)), videoID_(std::move(videoID)) {}

  const std::string& contentSourceID() const noexcept { return contentSourceID_; }
  const std::string& videoID() const noexcept { return videoID_; }

 private:
  const std::string contentSourceID_;
  const std::string videoID_;
};
