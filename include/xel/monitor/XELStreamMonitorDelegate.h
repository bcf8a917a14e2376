#pragma once

#include <memory>
#include <vector>

#include "xel/model/XELAd.h"
#include "xel/model/XELAdBreakInfo.h"
#include "xel/model/XELCuepoint.h"
#include "xel/platform/Error.h"
#include "xel/platform/Export.h"

class XELStreamMonitor;

/// What a stream monitor reports. The stream manager adopts it and passes each report on to the
/// host application; hosts implement `XELStreamManagerDelegate` instead.
///
/// Threads: main run loop. All operations are required.
class XEL_EXPORT XELStreamMonitorDelegate {
 public:
  virtual ~XELStreamMonitorDelegate();

  virtual void streamMonitor_didReceiveError(XELStreamMonitor& monitor,
                                             const std::shared_ptr<const xel::Error>& error) = 0;
  virtual void streamMonitorIsReadyForPlayback(XELStreamMonitor& monitor) = 0;
  virtual void streamMonitor_adBreakDidStart(XELStreamMonitor& monitor,
                                             const std::shared_ptr<XELAdBreakInfo>& info) = 0;
  virtual void streamMonitor_adDidStart(XELStreamMonitor& monitor,
                                        const std::shared_ptr<XELAd>& ad) = 0;
  virtual void streamMonitor_adDidCrossFirstQuartile(XELStreamMonitor& monitor,
                                                     const std::shared_ptr<XELAd>& ad) = 0;
  virtual void streamMonitor_adDidCrossMidpoint(XELStreamMonitor& monitor,
                                                const std::shared_ptr<XELAd>& ad) = 0;
  virtual void streamMonitor_adDidCrossThirdQuartile(XELStreamMonitor& monitor,
                                                     const std::shared_ptr<XELAd>& ad) = 0;
  virtual void streamMonitor_adDidComplete(XELStreamMonitor& monitor,
                                           const std::shared_ptr<XELAd>& ad) = 0;
  virtual void streamMonitor_adBreakDidEnd(XELStreamMonitor& monitor,
                                           const std::shared_ptr<XELAdBreakInfo>& info) = 0;
  /// @param remaining seconds of the ad that are left; not rounded, and negative in an overrun.
  virtual void streamMonitor_ad_didCountdownTo(XELStreamMonitor& monitor,
                                               const std::shared_ptr<XELAd>& ad,
                                               double remaining) = 0;
  virtual void streamMonitor_didUpdateCuepoints(
      XELStreamMonitor& monitor, const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) = 0;
};
