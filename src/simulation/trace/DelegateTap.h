#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "xel/session/XELStreamManagerDelegate.h"
#include "xel/simulation/JSONWriter.h"

namespace xel::simulation {

/// A delegate that takes every call in one place.
class DelegateTap : public XELStreamManagerDelegate {
 protected:
  /// Writes what came with the call as members of a line.
  using WriteMembers = std::function<void(JSONWriter&)>;
  /// Makes the same call to another delegate.
  using Forward = std::function<void(XELStreamManagerDelegate&)>;

  /// @param call such as "adDidStart" and "didCountdownTo".
  virtual void take(std::string_view call, const WriteMembers& members, const Forward& forward) = 0;

 private:
  using AdCall = void (XELStreamManagerDelegate::*)(XELStreamManager&,
                                                    const std::shared_ptr<XELAd>&);
  using BreakCall = void (XELStreamManagerDelegate::*)(XELStreamManager&,
                                                       const std::shared_ptr<XELAdBreakInfo>&);
  void takeAd(std::string_view call, AdCall function, XELStreamManager& manager,
              const std::shared_ptr<XELAd>& ad);
  void takeBreak(std::string_view call, BreakCall function, XELStreamManager& manager,
                 const std::shared_ptr<XELAdBreakInfo>& info);

  void streamManager_didInitializeStream(XELStreamManager& manager,
                                         const std::string& streamID) final;
  void streamManager_didReceiveError(XELStreamManager& manager,
                                     const std::shared_ptr<const Error>& error) final;
  void streamManagerIsReadyForPlayback(XELStreamManager& manager) final;
  void streamManager_adBreakDidStart(XELStreamManager& manager,
                                     const std::shared_ptr<XELAdBreakInfo>& info) final;
  void streamManager_adDidStart(XELStreamManager& manager, const std::shared_ptr<XELAd>& ad) final;
  void streamManager_adDidCrossFirstQuartile(XELStreamManager& manager,
                                             const std::shared_ptr<XELAd>& ad) final;
  void streamManager_adDidCrossMidpoint(XELStreamManager& manager,
                                        const std::shared_ptr<XELAd>& ad) final;
  void streamManager_adDidCrossThirdQuartile(XELStreamManager& manager,
                                             const std::shared_ptr<XELAd>& ad) final;
  void streamManager_adDidComplete(XELStreamManager& manager,
                                   const std::shared_ptr<XELAd>& ad) final;
  void streamManager_adBreakDidEnd(XELStreamManager& manager,
                                   const std::shared_ptr<XELAdBreakInfo>& info) final;
  void streamManager_ad_didCountdownTo(XELStreamManager& manager, const std::shared_ptr<XELAd>& ad,
                                       double remaining) final;
  void streamManager_didUpdateCuepoints(
      XELStreamManager& manager, const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) final;
};

}  // namespace xel::simulation
