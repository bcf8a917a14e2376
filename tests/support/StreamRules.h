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
    if (event.ad && event.ad != current_ && !isOfAnnouncedAd(event)) {
      return "an event of an ad that is not the current one";
    }
    if (event.name == "adBreakDidEnd") {
      const bool isCurrent = current_ && current_->adBreakInfo() == event.adBreakInfo;
      if (!isCurrent && announced_ != event.adBreakInfo) {
        return "the end of a break that is not the current one";
      }
      current_.reset();
      announced_.reset();
      ++breakEnds;
    }
    return {};
  }

  /// Ad keys.
  std::set<std::string> started;
  std::size_t breakEnds = 0;

 private:
  /// The first ad of a break is the current one when the break is told, so that a host which seeks
  /// then hears events of the ad ahead of its start.
  bool isOfAnnouncedAd(const simulation::RecordingDelegate::Event& event) const {
    return event.ad->adBreakInfo() == announced_ &&
           !started.contains(event.ad->adKey().value_or(""));
  }

  std::shared_ptr<XELAdBreakInfo> announced_;
  std::shared_ptr<XELAd> current_;
};

}  // namespace xel::test
