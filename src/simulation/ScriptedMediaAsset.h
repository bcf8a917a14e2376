#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "xel/simulation/ScriptedMediaPlayer.h"

namespace xel::simulation {

/// The asset of a `ScriptedMediaItem`.
class ScriptedMediaAsset final : public MediaAsset {
 public:
  using Calls = std::shared_ptr<std::vector<std::string>>;

  ScriptedMediaAsset(std::string url, std::vector<ScriptedMediaPlayer::AssetKey> keys, Calls calls);

  const std::string& url() const noexcept { return url_; }
  std::vector<std::string> keys() const;
  void finishLoading();
  /// Forgets who waits: they may own the asset.
  void stopLoading() { completions_.clear(); }

  void loadValuesAsynchronously(const std::vector<std::string>& keys,
                                std::function<void()> completion) override;
  KeyState stateOfValue(const std::string& key) const override;

 private:
  const std::string url_;
  const std::vector<ScriptedMediaPlayer::AssetKey> keys_;
  const Calls calls_;
  std::vector<std::function<void()>> completions_;
};

}  // namespace xel::simulation
