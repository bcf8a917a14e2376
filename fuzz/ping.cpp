// Tracking URLs, from the ad to the request: what may be sent is clean, and what is rewritten keeps
// its base and need not be rewritten again.

#include <algorithm>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "xel/simulation/SimulatedPlatform.h"

#include "fuzz/support/Require.h"
#include "tracking/XELTrackingPingHandler.h"

namespace {

using namespace xel;
using fuzz::require;

bool isClean(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

void checkRefusal(FuzzedDataProvider& input, const std::string& url) {
  HTTPRequest request;
  request.url = url;
  if (input.ConsumeBool()) request.method = input.ConsumeRandomLengthString(8);
  if (input.ConsumeBool()) {
    request.headers.push_back(
        {input.ConsumeRandomLengthString(8), input.ConsumeRandomLengthString(16)});
  }
  if (request.refusal()) return;
  require(isClean(request.url), "a URL with a blank, a control or a foreign byte");
  require(isClean(request.method) && !request.method.empty(), "a method that is no token");
  for (const auto& [name, value] : request.headers) {
    require(isClean(name) && name.find(':') == std::string::npos, "a header name that is no token");
    require(std::none_of(value.begin(), value.end(),
                         [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; }),
            "a header with a control character");
  }
}

void checkRewriting(const std::string& text) {
  const std::string filled = XELTrackingPingHandler::replaceMacros(text);
  require(XELTrackingPingHandler::replaceMacros(filled) == filled, "a macro that is left");
  const auto url = URL::parse(filled, URL::Brackets::tolerated);
  if (!url) return;
  require(url->text() == filled, "a URL that is not kept as it is written");
  const std::string rewritten = XELTrackingPingHandler::addSDKParams(*url);
  const auto query = url->query();
  if (!query || !XELTrackingPingHandler::isOrvaneURL(filled)) {
    require(rewritten == filled, "a rewritten URL that is not to be");
    return;
  }
  require(rewritten.find("sdkv=t.1.2.3/com.example.player") != std::string::npos &&
              rewritten.find("ssss=oxel") != std::string::npos,
          "a rewritten URL without its parameters");
  // The query's text is taken out wherever it stands, and the new one goes to the very end.
  const std::size_t base = filled.find('?') + 1;
  const bool isPlain =
      base + query->size() == filled.size() && (query->empty() || filled.find(*query) == base);
  if (!isPlain || HTTPRequest{.url = filled}.refusal()) return;
  require(rewritten.starts_with(filled.substr(0, base)), "a rewritten URL with another base");
  require(!HTTPRequest{.url = rewritten}.refusal(), "a rewritten URL that must not be sent");
  const auto again = URL::parse(rewritten, URL::Brackets::tolerated);
  require(again && XELTrackingPingHandler::addSDKParams(*again) == rewritten,
          "a URL that is rewritten twice");
}

/// The ad and its selected creative both have the URL.
void checkPings(const std::string& url, const std::string& event) {
  const simulation::SimulatedPlatform platform;
  const auto ad = XELAd::initPrivate();
  const auto creative = XELCreative::init();
  ad->setCreatives({creative});
  ad->setSelectedCreative(creative);
  ad->addEvent_trackingURL(event, url);
  creative->addEvent_trackingURL(event, url);
  XELTrackingPingHandler::pingEvent_forAd(event, ad);
  platform.loop().advance(60);
  const auto pings = platform.server().pings();
  require(pings.size() == 2, "a URL that was not pinged once");
  std::size_t failed = 0;
  for (const auto& [request, time] : pings) {
    require(request.trackingEvent == event && request.header("User-Agent"), "a ping without facts");
    failed += request.refusal().has_value();
  }
  require(platform.log().lines().size() == failed, "a failed ping that was not logged once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const std::string url = input.ConsumeRandomLengthString();
  const simulation::SimulatedPlatform platform;
  checkRefusal(input, url);
  checkRewriting(url);
  checkPings(url, input.ConsumeRemainingBytesAsString());
  return 0;
}
