#include <map>

#include <gtest/gtest.h>

#include "xel/platform/HTTPClient.h"

namespace xel {
namespace {

HTTPRequest withURL(std::string url) { return {.url = std::move(url)}; }
HTTPRequest withMethod(std::string method) {
  return {.url = "https://h", .method = std::move(method)};
}
HTTPRequest withHeader(std::string name, std::string value) {
  return {.url = "https://h", .headers = {{"Fine", "yes"}, {std::move(name), std::move(value)}}};
}

TEST(HTTPRequest, NamesWhatMustNotBeSent) {
  std::map<std::string, std::vector<HTTPRequest>> refused;  // By the beginning of the reason.
  refused["The URL is empty"] = {withURL("")};
  refused["The URL is neither"] = {withURL("h.example/p"), withURL("file:///p"),
                                   withURL("ftp://h")};
  refused["The URL is not valid"] = {withURL("no url"), withURL("https://h/\r\nX: y"),
                                     withURL("https://h/é")};
  refused["The URL names no host"] = {withURL("https:///p"), withURL("https:p")};
  refused["The header X holds"] = {withHeader("X", "a\nEvil: 1"), withHeader("X", "a\r"),
                                   withHeader("X", "a\t"), withHeader("X", "\x7F"),
                                   withHeader("X", std::string(1, '\0'))};
  refused["The name of a header"] = {withHeader("", "a"), withHeader("X: y", "a"),
                                     withHeader("X\r\nY", "a")};
  refused["The method"] = {withMethod(""), withMethod("GET / HTTP/1.1\r\n")};
  for (const auto& [reason, requests] : refused) {
    for (const HTTPRequest& request : requests) {
      EXPECT_TRUE(request.refusal().value_or("").starts_with(reason)) << request.url << reason;
    }
  }
  for (const HTTPRequest& request :
       {withURL("HTTP://h"), withURL("https://h/[A]?[B]"), withMethod("POST"),
        withHeader("X-a1", "café \"x\""), withHeader("X", "")}) {
    EXPECT_EQ(request.refusal(), std::nullopt);
  }
}

TEST(HTTPRequest, FindsTheFirstHeaderOfAName) {
  const HTTPRequest request = withHeader("FINE", "no");
  EXPECT_EQ(request.header("fine"), "yes");
  EXPECT_EQ(request.header("Fin"), std::nullopt);
}

}  // namespace
}  // namespace xel
