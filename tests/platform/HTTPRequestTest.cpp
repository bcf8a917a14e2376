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
  const struct {
    HTTPRequest request;
    const char* reason;  // The beginning of it; empty when the request may be sent.
  } cases[] = {{withURL("HTTP://h"), ""},
               {withURL("https://h/[A]?[B]"), ""},
               {withURL(""), "The URL is empty"},
               {withURL("not a url"), "The URL is not valid"},
               {withURL("https://h/\r\nX: y"), "The URL is not valid"},
               {withURL("https://h/\xC3\xA9"), "The URL is not valid"},
               {withURL("h.example/p"), "The URL is neither"},
               {withURL("file:///etc/passwd"), "The URL is neither"},
               {withURL("ftp://h/"), "The URL is neither"},
               {withURL("https:///p"), "The URL names no host"},
               {withURL("https:p"), "The URL names no host"},
               {withHeader("X-a1", "caf\xC3\xA9\t\"x\""), ""},
               {withHeader("X", ""), ""},
               {withHeader("X", "a\nEvil: 1"), "The header X holds a control"},
               {withHeader("X", "a\r"), "The header X holds a control"},
               {withHeader("X", std::string(1, '\0')), "The header X holds a control"},
               {withHeader("X", "\x7F"), "The header X holds a control"},
               {withHeader("", "a"), "The name of a header"},
               {withHeader("X: y", "a"), "The name of a header"},
               {withHeader("X\r\nY", "a"), "The name of a header"},
               {withMethod("POST"), ""},
               {withMethod(""), "The method"},
               {withMethod("GET / HTTP/1.1\r\n"), "The method"}};
  for (const auto& [request, reason] : cases) {
    const std::string refusal = request.refusal().value_or("");
    EXPECT_EQ(refusal.empty(), std::string(reason).empty()) << refusal << reason;
    EXPECT_TRUE(refusal.starts_with(reason)) << refusal << reason;
  }
}

TEST(HTTPRequest, FindsTheFirstHeaderOfAName) {
  const HTTPRequest request = withHeader("FINE", "no");
  EXPECT_EQ(request.header("fine"), "yes");
  EXPECT_EQ(request.header("Fin"), std::nullopt);
}

}  // namespace
}  // namespace xel
