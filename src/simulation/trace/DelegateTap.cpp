#include "simulation/trace/DelegateTap.h"

namespace xel::simulation {

void DelegateTap::takeAd(std::string_view call, AdCall function, XELStreamManager& manager,
                         const std::shared_ptr<XELAd>& ad) {
  take(
      call, [&](JSONWriter& line) { line.member("ad", ad); },
      [&](XELStreamManagerDelegate& to) { (to.*function)(manager, ad); });
}

void DelegateTap::takeBreak(std::string_view call, BreakCall function, XELStreamManager& manager,
                            const std::shared_ptr<XELAdBreakInfo>& info) {
  take(
      call, [&](JSONWriter& line) { line.member("adBreakInfo", info); },
      [&](XELStreamManagerDelegate& to) { (to.*function)(manager, info); });
}

void DelegateTap::streamManager_didInitializeStream(XELStreamManager& manager,
                                                    const std::string& streamID) {
  take(
      "didInitializeStream", [&](JSONWriter& line) { line.member("streamID", streamID); },
      [&](XELStreamManagerDelegate& to) {
        to.streamManager_didInitializeStream(manager, streamID);
      });
}

void DelegateTap::streamManager_didReceiveError(XELStreamManager& manager,
                                                const std::shared_ptr<const Error>& error) {
  take(
      "didReceiveError", [&](JSONWriter& line) { line.member("error", error); },
      [&](XELStreamManagerDelegate& to) { to.streamManager_didReceiveError(manager, error); });
}

void DelegateTap::streamManagerIsReadyForPlayback(XELStreamManager& manager) {
  take(
      "streamManagerIsReadyForPlayback", [](JSONWriter&) {},
      [&](XELStreamManagerDelegate& to) { to.streamManagerIsReadyForPlayback(manager); });
}

void DelegateTap::streamManager_adBreakDidStart(XELStreamManager& manager,
                                                const std::shared_ptr<XELAdBreakInfo>& info) {
  takeBreak("adBreakDidStart", &XELStreamManagerDelegate::streamManager_adBreakDidStart, manager,
            info);
}

void DelegateTap::streamManager_adDidStart(XELStreamManager& manager,
                                           const std::shared_ptr<XELAd>& ad) {
  takeAd("adDidStart", &XELStreamManagerDelegate::streamManager_adDidStart, manager, ad);
}

void DelegateTap::streamManager_adDidCrossFirstQuartile(XELStreamManager& manager,
                                                        const std::shared_ptr<XELAd>& ad) {
  takeAd("adDidCrossFirstQuartile",
         &XELStreamManagerDelegate::streamManager_adDidCrossFirstQuartile, manager, ad);
}

void DelegateTap::streamManager_adDidCrossMidpoint(XELStreamManager& manager,
                                                   const std::shared_ptr<XELAd>& ad) {
  takeAd("adDidCrossMidpoint", &XELStreamManagerDelegate::streamManager_adDidCrossMidpoint, manager,
         ad);
}

void DelegateTap::streamManager_adDidCrossThirdQuartile(XELStreamManager& manager,
                                                        const std::shared_ptr<XELAd>& ad) {
  takeAd("adDidCrossThirdQuartile",
         &XELStreamManagerDelegate::streamManager_adDidCrossThirdQuartile, manager, ad);
}

void DelegateTap::streamManager_adDidComplete(XELStreamManager& manager,
                                              const std::shared_ptr<XELAd>& ad) {
  takeAd("adDidComplete", &XELStreamManagerDelegate::streamManager_adDidComplete, manager, ad);
}

void DelegateTap::streamManager_adBreakDidEnd(XELStreamManager& manager,
                                              const std::shared_ptr<XELAdBreakInfo>& info) {
  takeBreak("adBreakDidEnd", &XELStreamManagerDelegate::streamManager_adBreakDidEnd, manager, info);
}

void DelegateTap::streamManager_ad_didCountdownTo(XELStreamManager& manager,
                                                  const std::shared_ptr<XELAd>& ad,
                                                  double remaining) {
  take(
      "didCountdownTo",
      [&](JSONWriter& line) { line.member("ad", ad).member("remaining", remaining); },
      [&](XELStreamManagerDelegate& to) {
        to.streamManager_ad_didCountdownTo(manager, ad, remaining);
      });
}

void DelegateTap::streamManager_didUpdateCuepoints(
    XELStreamManager& manager, const std::vector<std::shared_ptr<XELCuepoint>>& cuepoints) {
  take(
      "didUpdateCuepoints", [&](JSONWriter& line) { line.member("cuepoints", cuepoints); },
      [&](XELStreamManagerDelegate& to) {
        to.streamManager_didUpdateCuepoints(manager, cuepoints);
      });
}

}  // namespace xel::simulation
