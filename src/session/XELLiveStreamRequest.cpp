#include "xel/session/XELLiveStreamRequest.h"

#include "session/RequestParameter.h"

std::shared_ptr<XELLiveStreamRequest> XELLiveStreamRequest::initWithAssetKey(std::string assetKey) {
  if (!xel::isSatisfied("assetKey", assetKey)) return nullptr;
  return std::make_shared<XELLiveStreamRequest>(Token(), std::move(assetKey));
}
