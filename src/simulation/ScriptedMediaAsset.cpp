#include "simulation/ScriptedMediaAsset.h"

#include <algorithm>
#include <utility>

namespace xel::simulation {

ScriptedMediaAsset::ScriptedMediaAsset(std::string url,
                                       std::vector<ScriptedMediaPlayer::AssetKey> keys, Calls calls)
    : url_(std::move(url)), keys_(std::move(keys)), calls_(std::move(calls)) {}

std::vector<std::string> ScriptedMediaAsset::keys() const {
  std::vector<std::string> names;
  for (const auto& [name, state] : keys_) names.push_back(name);
  return names;
}

void ScriptedMediaAsset::finishLoading() {
  const auto completions = std::exchange(completions_, {});
  for (const auto& completion : completions) completion();
}

void ScriptedMediaAsset::loadValuesAsynchronously(const std::vector<std::string>& keys,
                                                  std::function<void()> completion) {
  std::string call = "loadValues " + url_;
  for (const std::string& key : keys) call += " " + key;
  calls_->push_back(std::move(call));
  completions_.push_back(std::move(completion));
}

MediaAsset::KeyState ScriptedMediaAsset::stateOfValue(const std::string& key) const {
  const auto found =
      std::find_if(keys_.begin(), keys_.end(), [&](const auto& each) { return each.first == key; });
  return found == keys_.end() ? KeyState() : found->second;
}

}  // namespace xel::simulation
