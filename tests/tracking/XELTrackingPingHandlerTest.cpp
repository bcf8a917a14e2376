#include "support/PlatformTest.h"
#include "tracking/XELTrackingPingHandler.h"

namespace xel::test {
namespace {

class XELTrackingPingHandlerTest : public PlatformTest {
 public:
  static std::string failed(const std::string& event) {
    return "Internal Error: Tracking ping failed for event: " + event;
  }
  std::vector<std::string> sent() const {
    std::vector<std::string> urls;
    for (const auto& [request, time] : platform.server().requests()) urls.push_back(request.url);
    return urls;
  }

  std::shared_ptr<XELAd> ad = XELAd::initPrivate();
};

TEST_F(XELTrackingPingHandlerTest, SendsTheURLsOfTheAdThenOfItsSelectedCreative) {
  const auto other = XELCreative::init(), selected = XELCreative::init();
  const auto companion = XELCompanion::initPrivate();
  selected->addEvent_trackingURL("start", "https://h/creative?[SDKV]");
  other->addEvent_trackingURL("start", "https://h/other");
  companion->addEvent_trackingURL("start", "https://h/companion");
  ad->setTrackingURLs(
      {{"start", {"https://h/b", "https://h/a", "https://h/b"}}, {"Start", {"https://h/upper"}}});
  ad->addCreatives({other, selected});
  ad->addCompanions({companion});
  XELTrackingPingHandler::pingEvent_forAd("start", ad);
  ad->setSelectedCreative(selected);
  XELTrackingPingHandler::pingEvent_forAd("start", ad);
  XELTrackingPingHandler::pingEvent_forAd("complete", ad);
  XELTrackingPingHandler::pingEvent_forAd("start", nullptr);
  EXPECT_EQ(sent(),
            (std::vector<std::string>{"https://h/b", "https://h/a", "https://h/b", "https://h/b",
                                      "https://h/a", "https://h/b", "https://h/creative?t.1.2.3"}));
  const HTTPRequest& request = platform.server().requests()[0].request;
  EXPECT_EQ(request.method + request.body, "GET");
  ASSERT_EQ(request.headers.size(), 1u);
  EXPECT_EQ(request.header("User-Agent"), "XELtvOS/t.1.2.3 ExampleOS/6.7 com.example.player/4.5");
  EXPECT_EQ(request.trackingEvent, "start");
  EXPECT_EQ(request.timeout, std::nullopt);
  platform.loop().runUntilIdle();
}

TEST_F(XELTrackingPingHandlerTest, LogsFailuresAndNothingElse) {
  for (const int status : {200, 302, 399, 400, 404, 503}) {
    const std::string url = "https://h/" + std::to_string(status);
    platform.server().answer(url, {status});
    ad->addEvent_trackingURL("status " + std::to_string(status), url);
  }
  ad->addEvent_trackingURL("hangs", "https://h/hangs");
  ad->addEvent_trackingURL("lost", "https://h/lost");
  platform.server().hang("https://h/hangs");
  platform.server().fail("https://h/lost", TransferError::connectionLost);
  for (const auto& [event, urls] : ad->trackingURLs()) {
    XELTrackingPingHandler::pingEvent_forAd(event, ad);
  }
  EXPECT_EQ(platform.log().lines(), std::vector<std::string>());
  ad.reset();
  platform.loop().advance(61);
  expectedLog = {failed("lost"), failed("status 400"), failed("status 404"), failed("status 503"),
                 failed("hangs")};
}

TEST_F(XELTrackingPingHandlerTest, SendsTextsThatAreNoURLsAsTheyAreAndLogsThem) {
  const std::vector<std::string> texts = {"",
                                          "\n  ",
                                          "no url",
                                          "https://h/é",
                                          "https://h/%zz?[SDKV ]",
                                          "ftp://h/",
                                          "//adserving.example"};
  for (const std::string& text : texts) ad->addEvent_trackingURL("complete", text);
  ad->addEvent_trackingURL("complete", "https://h/[CACHEBUSTING]?[x]");
  XELTrackingPingHandler::pingEvent_forAd("complete", ad);
  platform.loop().runUntilIdle();
  auto expected = texts;
  expected.push_back("https://h/[CACHEBUSTING]?[x]");
  EXPECT_EQ(sent(), expected);
  expectedLog.assign(texts.size(), failed("complete"));
}

TEST_F(XELTrackingPingHandlerTest, ReplacesTheVersionMacroWhereverItStands) {
  const auto replace = XELTrackingPingHandler::replaceMacros;
  EXPECT_EQ(replace("https://[SDKV]/?x=[SDKV]&y=[sdkv]&[SDKV"),
            "https://t.1.2.3/?x=t.1.2.3&y=[sdkv]&[SDKV");
  platform.environment().version = "[SDKV]";
  EXPECT_EQ(replace("[SDKV][SDKV]"), "t.[SDKV]t.[SDKV]");
  EXPECT_EQ(replace(""), "");
}

TEST_F(XELTrackingPingHandlerTest, KnowsMeasurementURLsByTheirText) {
  const auto isMeasurement = XELTrackingPingHandler::isOrvaneURL;
  for (const std::string rest :
       {"/pagead/conversion/?ai=1&sigh=2", "/pagead/adview?xai=&sigh=", "/pcs/view?xai=&sig=",
        ":1/a/kolpad/live/conversion?sigh=&ai=", "/pcs/viewthrough#xai=sig="}) {
    EXPECT_TRUE(isMeasurement("https://x.adserving.example" + rest)) << rest;
    EXPECT_TRUE(isMeasurement("h/?u=adservices.example" + rest)) << rest;
    EXPECT_FALSE(isMeasurement("https://h.example" + rest)) << rest;
    EXPECT_FALSE(isMeasurement("https://ADSERVING.example" + rest)) << rest;
  }
  for (const std::string rest :
       {"/?ai=1&sigh=2&xai=1&sig=2", "/pagead/adview?ai=1&sig=2", "/pagead/adview?sigh=2",
        "/pcs/view?ai=1&sigh=2", "/pcs/view?xai=1&sigh=2", "/pagead/adview/pcs/view?xai=1&sig=2",
        "/PCS/view?xai=1&sig=2", "/pcs/view?XAI=1&sig=2"}) {
    EXPECT_FALSE(isMeasurement("https://adserving.example" + rest)) << rest;
  }
  Services services;
  services.measurementDomains = {"", "x.example"};
  const simulation::SimulatedPlatform oneDomain(services);
  EXPECT_FALSE(isMeasurement("https://h.example/pcs/view?xai=&sig="));
  EXPECT_TRUE(isMeasurement("https://x.example/pcs/view?xai=&sig="));
}

TEST_F(XELTrackingPingHandlerTest, AddsItsParametersToMeasurementURLs) {
  const std::string base = "https://adserving.example/pagead/adview";
  const std::string ours = "sdkv=t.1.2.3/com.example.player&ssss=oxel";
  const std::pair<std::string, std::string> cases[] = {
      {"?ai=1&sigh=2&flag&sdkv=old", "?ai=1&sdkv=t.1.2.3/com.example.player&sigh=2&ssss=oxel"},
      {"/sigh=?ssss=a&ai=%61&a=[M]", "/sigh=?a=[M]&ai=%61&" + ours},
      {"/sigh=?ai=1&a=&=b&c=d=e&==&&ai=3", "/sigh=?=b&a=&ai=3&" + ours},
      {"/sigh=?ai=1#f", "/sigh=?#fai=1&" + ours},
      {"/ai=1/sigh=2?ai=1", "//sigh=2?ai=1&" + ours},
      {"/ai=/sigh=?flag&flag", "/ai=/sigh=?" + ours},
      {"/ai=/sigh=?", "/ai=/sigh=?" + ours},
      {"/ai=/sigh=", "/ai=/sigh="},
      {"?ai=1&sig=2", "?ai=1&sig=2"}};
  for (const auto& [rest, expected] : cases) {
    const auto url = URL::parse(base + rest, URL::Brackets::tolerated);
    ASSERT_TRUE(url) << rest;
    EXPECT_EQ(XELTrackingPingHandler::addSDKParams(*url), base + expected);
  }
  platform.environment().application = std::nullopt;
  ad->addEvent_trackingURL("start", base + "/sigh=?ai=[SDKV]");
  XELTrackingPingHandler::pingEvent_forAd("start", ad);
  EXPECT_EQ(sent()[0], base + "/sigh=?ai=t.1.2.3&sdkv=t.1.2.3/(null)&ssss=oxel");
}

}  // namespace
}  // namespace xel::test
