#include "xel/session/XELVODStreamRequest.h"

#include "session/RequestParameter.h"

std::shared_ptr<XELVODStreamRequest> XELVODStreamRequest::initWithContentSourceID_videoID(
    std::string contentSourceID, std::string videoID) {
  if (!xel::isSatisfied("contentSourceID", contentSourceID) ||
      !xel::isSatisfied("videoID", videoID)) {
    return nullptr;
  }
  return std::make_shared<XELVODStreamRequest>(Token(), std::move(contentSourceID),
                                               std::move(videoID));
}
