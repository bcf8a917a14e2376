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

TEST(URL, PartsAreKeptAsTheyAreWritten) {
  const struct {
    const char *text, *scheme, *host;
    std::optional<std::string_view> query;
    const char* withOtherQuery;
  } cases[] = {
      {"HTTPS://u@H.COM:1/p?a=%61#f?g", "HTTPS", "H.COM", "a=%61", "HTTPS://u@H.COM:1/p?new#f?g"},
      {"http://[::1]/?[M]", "http", "::1", "[M]", "http://[::1]/?new"},
      {"http://h?#f", "http", "h", "", "http://h?new#f"},
      {"http://h/p#f?a=1", "http", "h", std::nullopt, ""},
      {"file:///p?", "file", "", "", "file:///p?new"}};
  for (const auto& each : cases) {
    const auto url = URL::parse(each.text, URL::Brackets::tolerated);
    ASSERT_TRUE(url) << each.text;
    EXPECT_EQ(url->scheme(), each.scheme);
    EXPECT_EQ(url->host(), each.host);
    EXPECT_EQ(url->query(), each.query);
    EXPECT_EQ(url->query() ? url->textWithQuery("new") : "", each.withOtherQuery);
  }
}

TEST(Query, ItemsAreDecodedAndWrittenAgain) {
  const struct {
    const char *encoded, *items, *written;  // An item reads {name}, or {name|value}.
  } cases[] = {{"", "", ""},
               {"a=1&b=2", "{a|1}{b|2}", "a=1&b=2"},
               {"%61=%62%2B+", "{a|b++}", "a=b++"},
               {"a&b=&=c&", "{a}{b|}{|c}{}", "a&b=&=c&"},
               {"&&", "{}{}{}", "&&"},
               {"a%3Db=b=c%26", "{a=b|b=c&}", "a%3Db=b=c%26"},
               {"%c3%a9=%20%25%5B%7c", "{\xC3\xA9| %[|}", "%C3%A9=%20%25%5B%7C"},
               {"-._~!$'()*+,;:@/?=", "{-._~!$'()*+,;:@/?|}", "-._~!$'()*+,;:@/?="},
               {"%zz%4", "{%zz%4}", "%25zz%254"}};
  for (const auto& [encoded, expected, written] : cases) {
    std::string items;
    for (const auto& [name, value] : parseQuery(encoded)) {
      items += "{" + name + (value ? "|" + *value : "") + "}";
    }
    EXPECT_EQ(items, expected);
    EXPECT_EQ(writeQuery(parseQuery(encoded)), written);
  }
}

}  // namespace
}  // namespace xel
