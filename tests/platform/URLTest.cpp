#include <gtest/gtest.h>

#include "platform/URL.h"

namespace xel {
namespace {

TEST(URL, IsJudgedByRFC3986) {
  for (const char* text :
       {"https://u:p@example.com:8443/p?a=1?2&b#f", "https://[::1]:1?%5B", "//h", ""}) {
    EXPECT_TRUE(URL::parse(text)) << text;
  }
  for (const char* text :
       {"https://h/[M]/p", "https://h/p?cb=[CACHEBUSTING]", "https://h?[A]#[B]]"}) {
    EXPECT_FALSE(URL::parse(text)) << text;
    const auto tolerated = URL::parse(text, URL::Brackets::tolerated);
    EXPECT_TRUE(tolerated && tolerated->text() == text) << text;
  }
  for (const std::string text :
       {"https://[M]/p", "https://[::1/p", "https://h[1]/p", "https://h:abc/p",
        "https://h/\xC3\xA9", "https://h/p?\xC3\xA9", "https://h/%zz", "https://h/p?100%",
        "https://h/a|b", "https://h/a b", "https://h/{id}", "https://h/p#a#b", "https://h/a\nb",
        "1https://h/"}) {
    EXPECT_FALSE(URL::parse(text)) << text;
    EXPECT_FALSE(URL::parse(text, URL::Brackets::tolerated)) << text;
  }
  EXPECT_FALSE(URL::parse(std::string("https://h/a\0b", 13)));
}

}  // namespace
}  // namespace xel
