#include <gtest/gtest.h>

#include "xel/platform/HTTPClient.h"

#include "support/PlatformTest.h"

namespace xel {
namespace {

struct RefusalCase {
  const char* behaviour;
  HTTPRequest request;
  const char* reason;  // Part of it; null when the request may be sent.
};
class Refusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(Refusal, NamesWhatMustNotBeSent) {
  const auto refusal = GetParam().request.refusal();
  EXPECT_EQ(refusal.has_value(), GetParam().reason != nullptr) << refusal.value_or("");
  if (refusal && GetParam().reason) {
    EXPECT_NE(refusal->find(GetParam().reason), std::string::npos) << *refusal;
  }
}

HTTPRequest request(std::string url) {
  HTTPRequest request;
  request.url = std::move(url);
  return request;
}
RefusalCase url(const char* behaviour, std::string url, const char* reason) {
  return {behaviour, request(std::move(url)), reason};
}
RefusalCase header(const char* behaviour, std::string name, std::string value, const char* reason) {
  RefusalCase row{behaviour, request("https://h/"), reason};
  row.request.headers = {{"Fine", "yes"}, {std::move(name), std::move(value)}};
  return row;
}
RefusalCase method(const char* behaviour, std::string method, const char* reason) {
  RefusalCase row{behaviour, request("https://h/"), reason};
  row.request.method = std::move(method);
  return row;
}

INSTANTIATE_TEST_SUITE_P(
    , Refusal,
    testing::Values(url("HTTP", "http://h", nullptr), url("UpperCase", "HTTPS://h/p?q", nullptr),
                    url("Macros", "https://h/[A]?[B]", nullptr), url("EmptyURL", "", "empty"),
                    url("Words", "not a url", "not valid"), url("Relative", "/p", "neither http"),
                    url("NoScheme", "h.example/p", "neither http"),
                    url("File", "file:///etc/passwd", "neither http"),
                    url("FTP", "ftp://h/", "neither http"), url("NoHost", "https:///p", "no host"),
                    url("NoAuthority", "https:p", "no host"),
                    url("LineEndInURL", "https://h/\r\nX: y", "not valid"),
                    url("NonASCIIURL", "https://h/\xC3\xA9", "not valid"),
                    header("Text", "X-a1", "caf\xC3\xA9\t\"x\"", nullptr),
                    header("EmptyValue", "X", "", nullptr),
                    header("LineFeedInValue", "X", "a\nEvil: 1", "X holds a control"),
                    header("CarriageReturnInValue", "X", "a\r", "X holds a control"),
                    header("NULInValue", "X", std::string(1, '\0'), "X holds a control"),
                    header("DeleteInValue", "X", "\x7F", "X holds a control"),
                    header("EmptyName", "", "a", "name of a header"),
                    header("ColonInName", "X: y", "a", "name of a header"),
                    header("LineEndInName", "X\r\nY", "a", "name of a header"),
                    method("Post", "POST", nullptr), method("NoMethod", "", "method"),
                    method("SplitMethod", "GET / HTTP/1.1\r\n", "method")),
    test::behaviourName);

TEST(HTTPRequest, FindsTheFirstHeaderOfAName) {
  HTTPRequest request;
  request.headers = {{"User-Agent", "one"}, {"user-agent", "two"}};
  EXPECT_EQ(request.header("USER-AGENT"), "one");
  EXPECT_EQ(request.header("User"), std::nullopt);
}

}  // namespace
}  // namespace xel
