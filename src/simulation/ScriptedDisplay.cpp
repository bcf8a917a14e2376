#include "xel/simulation/ScriptedDisplay.h"

#include <cmath>
#include <utility>

namespace xel::simulation {

ScriptedDisplay::ScriptedDisplay() = default;
ScriptedDisplay::~ScriptedDisplay() = default;

void ScriptedDisplay::reportReady() {
  const auto self = weak_from_this().lock();
  if (const auto delegate = this->delegate()) delegate->videoDisplayIsReadyForPlayback(*this);
}

void ScriptedDisplay::reportProgress(double time) {
  const auto self = weak_from_this().lock();
  if (const auto delegate = this->delegate()) {
    delegate->videoDisplay_didProgressToTime(*this, time);
  }
}

void ScriptedDisplay::play(double from, double to, double step) {
  const auto self = weak_from_this().lock();
  const double last = std::floor((to - from) / step + 1e-9);
  for (double n = 0; n <= last; ++n) reportProgress(from + n * step);
}

void ScriptedDisplay::reportMetadata(const TimedMetadata& metadata) {
  const auto self = weak_from_this().lock();
  if (const auto delegate = this->delegate()) {
    delegate->videoDisplay_didReceiveTimedMetadata(*this, metadata);
  }
}

void ScriptedDisplay::reportTXXX(std::string_view text) {
  reportMetadata({{"TXXX", std::string(text)}});
}

void ScriptedDisplay::reportFailure(const std::shared_ptr<const Error>& error) {
  const auto self = weak_from_this().lock();
  if (const auto delegate = this->delegate()) delegate->videoDisplay_didFailWithError(*this, error);
}

void ScriptedDisplay::loadURL_withSubtitles(const std::string& url,
                                            const std::vector<JSONValue>& subtitles) {
  loads_.push_back({url, subtitles});
}

void ScriptedDisplay::setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) {
  delegate_ = std::move(delegate);
}

}  // namespace xel::simulation
