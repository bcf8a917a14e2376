#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/Error.h"
#include "xel/platform/Export.h"
#include "xel/platform/MediaPlayer.h"

namespace xel::simulation {

class ScriptedMediaAsset;

/// An item of a `ScriptedMediaPlayer`: loads and changes when the test says so.
///
/// It keeps itself alive during its reports. Threads: main run loop, but for `finishLoading`.
class XEL_EXPORT ScriptedMediaItem final : public MediaItem,
                                           public std::enable_shared_from_this<ScriptedMediaItem> {
 public:
  explicit ScriptedMediaItem(std::shared_ptr<ScriptedMediaAsset> asset);
  ~ScriptedMediaItem() override;

  const std::string& url() const noexcept;

  /// Ends the loading of the asset's keys, on the calling thread; whoever waits for them is told
  /// there. Does nothing when nobody waits. Threads: any, but one at a time.
  void finishLoading();
  /// Reports the status, also when it is the same as before.
  /// @param error why it failed; may be null.
  void setStatus(MediaItemStatus status, std::shared_ptr<const Error> error = nullptr);
  /// Reports a change from the earlier metadata to this, also when both are one object.
  void setTimedMetadata(MediaMetadata metadata);
  /// The metadata from now on is one text under the key "TXXX".
  void setTXXX(std::string_view text);

  std::shared_ptr<MediaAsset> asset() const override;
  std::vector<std::string> automaticallyLoadedAssetKeys() const override;
  MediaItemStatus status() const override { return status_; }
  std::shared_ptr<const Error> error() const override { return error_; }
  MediaMetadata timedMetadata() const override { return timedMetadata_; }

 private:
  const std::shared_ptr<ScriptedMediaAsset> asset_;
  MediaItemStatus status_ = MediaItemStatus::unknown;
  std::shared_ptr<const Error> error_;
  MediaMetadata timedMetadata_;
};

}  // namespace xel::simulation
