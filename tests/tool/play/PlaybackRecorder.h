#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "play/Playback.h"

namespace xel {

/// Writes down what a playback reports as words: a text as it is, a tick as its time.
class PlaybackRecorder final : public XELVideoDisplayDelegate, public PlaybackObserver {
 public:
  void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay&, const TimedMetadata& data) override {
    add(data.at("TXXX"));
  }
  void videoDisplay_didProgressToTime(XELVideoDisplay&, double time) override {
    add(numberText(time));
  }
  void videoDisplay_didFailWithError(XELVideoDisplay&,
                                     const std::shared_ptr<const Error>& error) override {
    add(error->domain + ":" + std::to_string(error->code));
  }
  void videoDisplayIsReadyForPlayback(XELVideoDisplay&) override { add("ready"); }
  void playbackWillLoad(const std::string&, const std::vector<JSONValue>&) override { add("load"); }
  void playbackWillSeek(double to) override { add("->" + numberText(to)); }
  void playbackDidTick() override {}
  void playbackDidMiss(std::uint64_t segments) override {
    add("missed:" + std::to_string(segments));
  }
  void playbackDidEnd() override { add("end"); }

  /// The words since the last call of this.
  std::string taken() { return std::exchange(words_, {}); }

  std::function<void(const std::string& word)> onWord;

 private:
  static std::string numberText(double number) {
    std::ostringstream text;
    text << number;
    return text.str();
  }
  void add(const std::string& word) {
    words_ += (words_.empty() ? "" : " ") + word;
    if (const auto action = onWord) action(word);
  }

  std::string words_;
};

}  // namespace xel
