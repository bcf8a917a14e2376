#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "xel/platform/Error.h"
#include "xel/platform/Export.h"
#include "xel/session/XELStreamManagerDelegate.h"

namespace xel::simulation {

/// A host that writes down what it hears. Threads: main run loop.
class XEL_EXPORT RecordingDelegate final : public XELStreamManagerDelegate {
 public:
  /// One call, with the objects that came with it; the others are empty.
  struct Event {
    /// The call's name without "streamManager" and inner labels, such as "adDidStart" and
    /// "didCountdownTo"; but "streamManagerIsReadyForPlayback".
    std::string name;
    /// The call as one line, with the values of that moment.
    std::string line;
    std::string streamID = {};
    std::shared_ptr<XELAd> ad = {};
    std::shared_ptr<XELAdBreakInfo> adBreakInfo = {};
    double remaining = 0;
    /// Shared with the library, which may mark them played later.
    std::vector<std::shared_ptr<XELCuepoint>> cuepoints = {};
    std::shared_ptr<const Error> error = {};
  };
  enum class Countdowns { included, leftOut };

  RecordingDelegate();
  ~RecordingDelegate() override;

  /// Every call, in order.
  const std::vector<Event>& events() const noexcept { return events_; }
  /// The lines of the events.
  std::vector<std::string> lines(Countdowns countdowns = Countdowns::included) const;

  /// Called after each event has been recorded. It may let go of anything, this delegate too.
  std::function<void(const Event& event)> onEvent;

  void streamManager_didInitializeStream(XELStreamManager& manager,
                                         const std::string& streamID) override;
  void streamManager_didReceiveError(XELStreamManager& manager,
                                     const std::shared_ptr<const Error>& error) override;
  void streamManagerIsReadyForPlayback(XELStreamManager& manager) override;
  void streamManager_adBreakDidStart(XELStreamManager& manager,
                                     const std::shared_ptr<XELAdBreakInfo>& info) override;
  void streamManager_adDidStart(XELStreamManager& manager,
                                const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidCrossFirstQuartile(XELStreamManager& manager,
                                             const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidCrossMidpoint(XELStreamManager& manager,
                                        const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidCrossThirdQuartile(XELStreamManager& manager,
                                             const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adDidComplete(XELStreamManager& manager,
                                   const std::shared_ptr<XELAd>& ad) override;
  void streamManager_adBreakDidEnd(XELStreamManager& manager,
                                   const std::shared_ptr<XELAdBreakInfo>& info) override;
  void streamManager_ad_didCountdownTo(XELStreamManager& manager, const std::shared_ptr<XELAd>& ad,
                                       double remaining) override;
  void streamManager_didUpdateCuepoints(
      XELStreamManager& manager,
      const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) override;

 private:
  void recordAd(std::string name, const std::shared_ptr<XELAd>& ad);
  void record(Event event);

  std::vector<Event> events_;
};

}  // namespace xel::simulation
