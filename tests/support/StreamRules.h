#pragma once

#include <cstddef>
#include <memory>
#include <set>
#include <string>

#include "xel/model/XELAd.h"
#include "xel/simulation/RecordingDelegate.h"

namespace xel::test {

/// What must hold of all that a delegate hears of one stream, whatever the library is told.
class StreamRules {
 public:
  /// What is wrong with the event after those before; empty if it is right.
  std::string follow(const simulation::RecordingDelegate::Event& event) {
    if (event.name == "adBreakDidStart") announced_ = event.adBreakInfo;
    if (event.name == "adDidStart") {
      if (!started.insert(event.ad->adKey().value_or("")).second) return "an ad started again";
      current_ = event.ad;
      if ((event.ad->adPosition() == 1) != (announced_ == event.ad->adBreakInfo())) {
        return "the start of a break that was not told, or told without its first ad";
      }
    }
    if (event.ad && event.ad != current_) return "an event of an ad that is not the current one";
    if (event.name == "adBreakDidEnd") {
      if (!current_ || current_->adBreakInfo() != event.adBreakInfo) {
        return "the end of a break that is not the current one";
      }
      current_.reset();
      ++breakEnds;
    }
    return {};
  }

  /// Ad keys.
  std::set<std::string> started;
  std::size_t breakEnds = 0;

 private:
  std::shared_ptr<XELAdBreakInfo> announced_;
  std::shared_ptr<XELAd> current_;
};

}  // namespace xel::test
