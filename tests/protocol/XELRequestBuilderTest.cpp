#include "protocol/XELEnvironmentUtils.h"
#include "protocol/XELRequestBuilder.h"
#include "support/PlatformTest.h"

namespace xel::test {
namespace {

using XELRequestBuilderTest = PlatformTest;

std::string written(const HTTPRequest& request) {
  std::string text = request.method + " " + request.url;
  for (const auto& [name, value] : request.headers) text += "\n" + name + ": " + value;
  return text + "\n" + request.body;
}

ScopedPlatform withHosts(const std::string& host) {
  Platform changed = Platform::current();
  changed.services.liveHost = changed.services.vodHost = host;
  return ScopedPlatform(std::move(changed));
}

TEST_F(XELRequestBuilderTest, WritesALiveRequestWithEverything) {
  const auto request = XELLiveStreamRequest::initWithAssetKey("as set/ä");
  request->setApiKey("key");
  request->setAuthToken("to\"ken");
  request->setStreamActivityMonitorID("monitor&1");
  request->setAttemptPreroll(true);
  request->setAdTagParameters({{"iu", "/a b"},
                               {"sz", ""},
                               {"foo", "x"},
                               {"IU", "x"},
                               {"xelfw_p&s", "1"},
                               {"xelfw_", "é😀"},
                               {"xelf", "x"},
                               {"cust_params", "a&b=c"},
                               {"ppid", "-._~^`{|}<>\\\n"},
                               {"dai-ot", "!*'();:@&=+$,/?%#[]\" "}});
  const auto built =
      XELRequestBuilder::buildRequestFromStreamRequest_correlator(request, 4294967295);
  ASSERT_TRUE(built);
  EXPECT_EQ(written(*built),
            "POST https://live.ssai.example/ssai/event/as set/ä/streams\n"
            "Authorization: TROVDAI token=\"to\"ken\"\n"
            "User-Agent: XELtvOS/t.1.2.3 ExampleOS/6.7 com.example.player/4.5\n"
            "correlator=4294967295&url=com.example.player&is_lat=0"
            "&rdid=01234567-89AB-4CDE-8F01-23456789ABCD&idtype=tvOS"
            "&sdkv=t.1.2.3/com.example.player&submodel=Box8,9&cust_params=a%26b%3Dc"
            "&dai-ot=%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D%22%20"
            "&iu=%2Fa%20b&ppid=-._~^`{|}<>\\\n&xelfw_=%C3%A9%F0%9F%98%80&xelfw_p&s=1"
            "&sam_id=monitor&1&attempt_preroll=true");
  EXPECT_EQ(built->timeout, std::chrono::seconds(5));
  EXPECT_EQ(built->cachePolicy, HTTPRequest::CachePolicy::reloadIgnoringLocalCache);
  EXPECT_EQ(built->trackingEvent, std::nullopt);
}

TEST_F(XELRequestBuilderTest, WritesAbsentFactsAsNull) {
  auto& facts = platform.environment();
  facts.version = facts.application = facts.applicationRelease = std::nullopt;
  facts.system = facts.systemRelease = facts.model = std::nullopt;
  facts.trackingEnabled = false;
  const auto vod = XELVODStreamRequest::initWithContentSourceID_videoID("source", "video");
  vod->setAuthToken("");
  vod->setStreamActivityMonitorID("");
  const std::string body =
      "correlator=0&url=(null)&is_lat=1"
      "&rdid=01234567-89AB-4CDE-8F01-23456789ABCD&idtype=tvOS"
      "&sdkv=t.(null)/(null)&submodel=(null)";
  EXPECT_EQ(written(*XELRequestBuilder::buildRequestFromStreamRequest_correlator(vod, 0)),
            "POST https://vod.ssai.example/ondemand/hls/content/source/vid/video/streams\n"
            "User-Agent: XELtvOS/t.(null) (null)/(null) (null)/\n" +
                body);
  const auto live = XELLiveStreamRequest::initWithAssetKey("k");
  live->setApiKey("key");
  const auto built = XELRequestBuilder::buildRequestFromStreamRequest_correlator(live, 0);
  EXPECT_EQ(built->header("Authorization"), "TROVDAI key=\"key\"");
  EXPECT_EQ(built->body, body + "&attempt_preroll=false");
}

TEST_F(XELRequestBuilderTest, RefusesOtherKindsAndRequestsWithoutIdentifiers) {
  struct OtherRequest : XELStreamRequest {};
  EXPECT_FALSE(XELRequestBuilder::buildRequestFromStreamRequest_correlator({}, 1));
  EXPECT_FALSE(XELRequestBuilder::buildRequestFromStreamRequest_correlator(
      std::make_shared<OtherRequest>(), 1));
  EXPECT_EQ(XELLiveStreamRequest::initWithAssetKey(""), nullptr);
  EXPECT_EQ(XELVODStreamRequest::initWithContentSourceID_videoID("", ""), nullptr);
  EXPECT_EQ(XELVODStreamRequest::initWithContentSourceID_videoID("s", ""), nullptr);
  EXPECT_NE(XELLiveStreamRequest::initWithAssetKey(" "), nullptr);
  expectedLog = {"Error: Invalid stream request", "Error: Invalid stream request",
                 "Invalid parameter not satisfying: assetKey",
                 "Invalid parameter not satisfying: contentSourceID",
                 "Invalid parameter not satisfying: videoID"};
}

TEST_F(XELRequestBuilderTest, LeadsToTheConfiguredHostOverHTTPSOrNowhere) {
  const auto live = XELLiveStreamRequest::initWithAssetKey("k");
  const auto vod = XELVODStreamRequest::initWithContentSourceID_videoID("s", "v");
  for (const std::string host : {"h.example", "h.example:80", "[::1]:8443"}) {
    const auto scope = withHosts(host);
    EXPECT_TRUE(XELRequestBuilder::buildStreamInitUrlWithLiveRequest(*live).starts_with(
        "https://" + host + "/ssai/"));
    EXPECT_TRUE(XELRequestBuilder::buildStreamInitUrlWithVODRequest(*vod).starts_with(
        "https://" + host + "/ondemand/"));
  }
  for (const std::string host :
       {"http://h", "https://h", "//h", "u@h", "u:p@h", "h/p?", "h#", "h\\", ""}) {
    const auto scope = withHosts(host);
    for (const auto& request : std::vector<std::shared_ptr<XELStreamRequest>>{live, vod}) {
      const auto built = XELRequestBuilder::buildRequestFromStreamRequest_correlator(request, 1);
      EXPECT_EQ(built->refusal(), "The URL names no host.") << built->url;
      if (host.empty()) continue;
      expectedLog.push_back(
          "Error: The stream-init host must be a host name, with or without a port, and nothing "
          "else");
    }
  }
}

}  // namespace
}  // namespace xel::test
