#include "xel/simulation/ScriptedMediaItem.h"

#include <utility>

#include "simulation/ScriptedMediaAsset.h"

namespace xel::simulation {

ScriptedMediaItem::ScriptedMediaItem(std::shared_ptr<ScriptedMediaAsset> asset)
    : asset_(std::move(asset)) {}
ScriptedMediaItem::~ScriptedMediaItem() = default;

const std::string& ScriptedMediaItem::url() const noexcept { return asset_->url(); }

void ScriptedMediaItem::finishLoading() {
  const auto asset = asset_;
  asset->finishLoading();
}

void ScriptedMediaItem::setStatus(MediaItemStatus status, std::shared_ptr<const Error> error) {
  const auto self = weak_from_this().lock();
  status_ = status;
  error_ = std::move(error);
  reportChange(kMediaItemStatus, {.newStatus = status});
}

void ScriptedMediaItem::setTimedMetadata(MediaMetadata metadata) {
  const auto self = weak_from_this().lock();
  const auto earlier = std::exchange(timedMetadata_, metadata);
  reportChange(kMediaItemTimedMetadata,
               {.oldTimedMetadata = earlier, .newTimedMetadata = std::move(metadata)});
}

void ScriptedMediaItem::setTXXX(std::string_view text) {
  setTimedMetadata(std::make_shared<const std::vector<MediaMetadataItem>>(
      1, MediaMetadataItem{"TXXX", std::string(text)}));
}

std::shared_ptr<MediaAsset> ScriptedMediaItem::asset() const { return asset_; }

std::vector<std::string> ScriptedMediaItem::automaticallyLoadedAssetKeys() const {
  return asset_->keys();
}

}  // namespace xel::simulation
