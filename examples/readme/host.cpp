#include <iostream>

#include <xel/xel.h>

struct Host final : XELStreamManagerDelegate {
  void streamManager_didInitializeStream(XELStreamManager&, const std::string&) override {}
  void streamManager_didReceiveError(XELStreamManager&,
                                     const std::shared_ptr<const xel::Error>& error) override {
    std::cerr << (error ? error->description : "the player failed") << '\n';
  }
  void streamManager_adDidStart(XELStreamManager&, const std::shared_ptr<XELAd>& ad) override {
    std::cout << "ad: " << ad->adTitle().value_or("untitled") << '\n';
  }
};

void watch(std::shared_ptr<XELVideoDisplay> player) {  // your player behind XELVideoDisplay
  xel::DefaultPlatformOptions options;
  options.host.applicationIdentifier = "com.example.tv";
  options.services.liveHost = "ssai.example.com";
  xel::Platform::install(xel::Platform::makeDefault(options));

  auto manager = XELStreamManager::initWithVideoDisplay(player);
  auto host = std::make_shared<Host>();
  manager->setDelegate(host);
  manager->requestStream(XELLiveStreamRequest::initWithAssetKey("news"));
  xel::StandardRunLoop::main()->run();
}
