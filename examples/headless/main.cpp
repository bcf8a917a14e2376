// A host application without pictures: follows an on-demand stream on a display of its own and
// prints what happens in it, until it is interrupted.
//
//   xel_headless HOST[:PORT] CONTENT-SOURCE-ID VIDEO-ID [CA-FILE]
#include <iostream>

#include <xel/xel.h>

/// Shows nothing, and plays at the speed of the clock.
struct ClockDisplay final : XELVideoDisplay, std::enable_shared_from_this<ClockDisplay> {
  void loadURL_withSubtitles(const std::string& url, const std::vector<xel::JSONValue>&) override {
    std::cout << "playing " << url << std::endl;
    ticks = 0;
    loop->cancel(timer);
    timer = loop->every(0.2, [weak = weak_from_this()] {
      if (auto self = weak.lock()) self->tick();
    });
  }
  void tick() {
    auto listener = delegate();
    if (!listener) return;
    if (ticks == 0) listener->videoDisplayIsReadyForPlayback(*this);
    listener->videoDisplay_didProgressToTime(*this, ticks++ / 5.0);
  }
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return weakDelegate.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> d) override { weakDelegate = d; }
  ~ClockDisplay() override { loop->cancel(timer); }

  std::shared_ptr<xel::RunLoop> loop = xel::Platform::current().mainRunLoop;
  std::weak_ptr<XELVideoDisplayDelegate> weakDelegate;
  xel::RunLoop::TimerID timer = 0;
  int ticks = 0;
};

struct Host final : XELStreamManagerDelegate {
  void streamManager_didInitializeStream(XELStreamManager&, const std::string& id) override {
    std::cout << "stream " << id << std::endl;
  }
  void streamManager_didReceiveError(XELStreamManager&,
                                     const std::shared_ptr<const xel::Error>& error) override {
    std::cerr << (error ? error->description : "the display failed") << std::endl;
    xel::StandardRunLoop::main()->stop();
  }
  void streamManager_adBreakDidStart(XELStreamManager&,
                                     const std::shared_ptr<XELAdBreakInfo>& info) override {
    std::cout << "break of " << info->totalAds() << " ads" << std::endl;
  }
  void streamManager_adDidStart(XELStreamManager&, const std::shared_ptr<XELAd>& ad) override {
    std::cout << "ad " << ad->adPosition() << ": " << ad->adTitle().value_or("?") << std::endl;
  }
  void streamManager_adBreakDidEnd(XELStreamManager&,
                                   const std::shared_ptr<XELAdBreakInfo>&) override {
    std::cout << "back to the content" << std::endl;
  }
};

int main(int argc, char** argv) {
  if (argc < 4) {
    std::cerr << "usage: xel_headless HOST[:PORT] CONTENT-SOURCE-ID VIDEO-ID [CA-FILE]\n";
    return 2;
  }
  xel::DefaultPlatformOptions options;
  options.host.applicationIdentifier = "com.example.headless";
  options.services.vodHost = argv[1];
  if (argc > 4) options.caFile = argv[4];
  xel::Platform::install(xel::Platform::makeDefault(options));

  auto manager = XELStreamManager::initWithVideoDisplay(std::make_shared<ClockDisplay>());
  auto host = std::make_shared<Host>();
  manager->setDelegate(host);
  manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID(argv[2], argv[3]));
  xel::StandardRunLoop::main()->run();
}
