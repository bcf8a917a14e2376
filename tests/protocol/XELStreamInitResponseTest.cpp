#include <gtest/gtest.h>

#include "xel/session/XELLiveStreamRequest.h"

#include "protocol/XELStreamInitResponse.h"

namespace xel {
namespace {

JSONValue parsed(const std::string& text) { return JSONValue::parse(text).value; }

TEST(XELStreamInitResponse, IsValidWhenStreamIDAndManifestArePresent) {
  const auto isValid = XELStreamInitResponse::isValidStreamResponse;
  EXPECT_TRUE(isValid(parsed(R"({"stream_id":null,"stream_manifest":[]})")));
  EXPECT_FALSE(isValid(parsed(R"({"stream_id":"s","Stream_manifest":"m","stream_type":"live"})")));
  EXPECT_FALSE(isValid(parsed(R"({"stream_manifest":"m"})")));
  EXPECT_FALSE(isValid(parsed(R"(["stream_id","stream_manifest"])")));
}

TEST(XELStreamInitResponse, PutsTheSuffixAtTheEndOfTheManifestURL) {
  const struct {
    const char *manifest, *suffix, *expected;  // Null: unchanged.
  } cases[] = {{"https://h/m", " ?a=1&b=2 \n", "https://h/m?a=1&b=2"},
               {"https://h/m?a=0&c=3", "a=1", "https://h/m?c=3&a=1"},
               {"https://h/m?a=0", "a=1", "https://h/m?&a=1"},
               {"https://h/m?A=0&aa=1&=2", "a=1", "https://h/m?A=0&aa=1&=2&a=1"},
               {"https://h/m?a=0&b&a&a=2&b=", "a=1", "https://h/m?b&b=&a=1"},
               {"https://h/m?%61=0&b=%7e%2f%20%5b", "a=1", "https://h/m?b=~/%20%5B&a=1"},
               {"https://h/m?a=0&b=1", "%61=1", "https://h/m?b=1&%61=1"},
               {"https://h/m?b=1+1%2B&a+b=1", "a%20b=2", "https://h/m?b=1+1+&a+b=1&a%20b=2"},
               {"https://h/m?a=1&&b=2&", "c", "https://h/m?a=1&&b=2&&c"},
               {"https://h/m?a=1&&b=2&", "b=3&", "https://h/m?a=1&b=3&"},
               {"https://h/m?-._~!$'()*+,;:@/?=-._~!$'()*+,;:@/?=", "a",
                "https://h/m?-._~!$'()*+,;:@/?=-._~!$'()*+,;:@/?=&a"},
               {"https://h/m?a%3Db=%c3%a9%7c%26", "a", "https://h/m?a%3Db=%C3%A9%7C%26&a"},
               {"https://h/m?a=b=c&d=&amp;", "d=1", "https://h/m?a=b=c&amp;&d=1"},
               {"https://h/m?", "a=1", "https://h/m??a=1"},
               {"https://h/m?a=1#f?a=2", "b=2", "https://h/m?a=1#f?a=2&b=2"},
               {"https://h/m#f", "a=1", "https://h/m#f?a=1"},
               {"https://h/m?a=1", "??a=2", "https://h/m?a=1&?a=2"},
               {"https://h/m?a=1", "a=2#a=3", "https://h/m?&a=2#a=3"},
               {"https://h/m?a=1", "a=é |", "https://h/m?a=1&a=é |"},
               {"m.m3u8?a=1", "a=2", "m.m3u8?&a=2"},
               {"https://h/m", "?", nullptr},
               {"https://h/m", " \t\n", nullptr},
               {"https://h/m", nullptr, nullptr},
               {"https://h/m |?a=1", "a=2", nullptr},
               {"https://h/m?a=[1]", "a=2", nullptr},
               {"https://h/é", "a=2", nullptr},
               {"https://h/m?a=%zz", "a=2", nullptr}};
  for (const auto& [manifest, suffix, expected] : cases) {
    const auto request = XELLiveStreamRequest::initWithAssetKey("asset");
    if (suffix) request->setManifestURLSuffix(suffix);
    const JSONValue response =
        parsed(R"({"x":[1],"stream_manifest":")" + std::string(manifest) + R"(","stream_id":"s"})");
    const JSONValue changed =
        XELStreamInitResponse::configureStreamInitResponse_withRequest(response, request);
    EXPECT_EQ(changed.serialize(), R"({"x":[1],"stream_manifest":")" +
                                       std::string(expected ? expected : manifest) +
                                       R"(","stream_id":"s"})")
        << manifest << " " << (suffix ? suffix : "");
  }
}

TEST(XELStreamInitResponse, StaysAsItIsWithoutARequestOrAManifestText) {
  const auto request = XELLiveStreamRequest::initWithAssetKey("asset");
  request->setManifestURLSuffix("a=1");
  const auto configure = XELStreamInitResponse::configureStreamInitResponse_withRequest;
  for (const char* text : {R"({"stream_manifest":7})", "{}", "[1]"}) {
    EXPECT_EQ(configure(parsed(text), request).serialize(), text);
  }
  EXPECT_EQ(configure(parsed(R"({"stream_manifest":"m"})"), nullptr)["stream_manifest"].text(),
            "m");
}

}  // namespace
}  // namespace xel
