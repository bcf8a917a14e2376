#pragma once

#include <memory>
#include <string>
#include <vector>

#include "xel/model/XELAd.h"
#include "xel/model/XELAdBreakInfo.h"
#include "xel/model/XELCuepoint.h"
#include "xel/platform/Error.h"
#include "xel/platform/Export.h"

class XELStreamManager;

/// What the host application hears of its stream. The first two operations are required.
///
/// Inside any of them the delegate may let go of the manager, the display and itself, and may
/// request another stream. It must not throw.
/// Threads: main run loop.
class XEL_EXPORT XELStreamManagerDelegate {
 public:
  virtual ~XELStreamManagerDelegate();

  /// The ad server opened a session. An error may still follow.
  virtual void streamManager_didInitializeStream(XELStreamManager& manager,
                                                 const std::string& streamID) = 0;
  /// The stream could not be opened (domains `xel::errorDomain` and `xel::httpErrorDomain`), or the
  /// display failed (the display's error as it is, which may be null).
  virtual void streamManager_didReceiveError(XELStreamManager& manager,
                                             const std::shared_ptr<const xel::Error>& error) = 0;

  /// The display is about to start playback; for a live stream with a pre-roll, once for each.
  virtual void streamManagerIsReadyForPlayback(XELStreamManager&) {}
  /// The first ad of a break is about to start.
  virtual void streamManager_adBreakDidStart(XELStreamManager&,
                                             const std::shared_ptr<XELAdBreakInfo>&) {}
  /// An ad started; its impressions and start pings are on their way.
  virtual void streamManager_adDidStart(XELStreamManager&, const std::shared_ptr<XELAd>&) {}
  virtual void streamManager_adDidCrossFirstQuartile(XELStreamManager&,
                                                     const std::shared_ptr<XELAd>&) {}
  virtual void streamManager_adDidCrossMidpoint(XELStreamManager&, const std::shared_ptr<XELAd>&) {}
  virtual void streamManager_adDidCrossThirdQuartile(XELStreamManager&,
                                                     const std::shared_ptr<XELAd>&) {}
  virtual void streamManager_adDidComplete(XELStreamManager&, const std::shared_ptr<XELAd>&) {}
  /// The last ad of a break completed, or the break overran by a second.
  virtual void streamManager_adBreakDidEnd(XELStreamManager&,
                                           const std::shared_ptr<XELAdBreakInfo>&) {}
  /// On every progress report while an ad plays.
  /// @param remaining seconds of the ad that are left; not rounded, and negative in an overrun.
  virtual void streamManager_ad_didCountdownTo(XELStreamManager&, const std::shared_ptr<XELAd>&,
                                               [[maybe_unused]] double remaining) {}
  /// The cue points of an on-demand stream became known, or one was played. Ascending by start.
  virtual void streamManager_didUpdateCuepoints(XELStreamManager&,
                                                const std::vector<std::shared_ptr<XELCuepoint>>&) {}
};
