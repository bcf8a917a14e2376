#include <gtest/gtest.h>

#include "platform/URL.h"

namespace xel {
namespace {

TEST(URL, IsJudgedByRFC3986) {
  enum Verdict { valid, onlyWithBrackets, invalid };
  const struct {
    std::string text;
    Verdict verdict;
  } cases[] = {
      {"https://example.com/p?a=1?2&b#f", valid},
      {"https://u:p@example.com:8443", valid},
      {"https://[::1]:8443/p", valid},
      {"https://h/%C3%A9?%5B", valid},
      {"//h/p", valid},
      {"", valid},
      {"https://h/[MACRO]/p", onlyWithBrackets},
      {"https://h/p?cb=[CACHEBUSTING]", onlyWithBrackets},
      {"https://h?[A]#[B]]", onlyWithBrackets},
      {"https://[MACRO]/p", invalid},
      {"https://[::1/p", invalid},
      {"https://h[1]/p", invalid},
      {"https://h:abc/p", invalid},
      {"https://h/caf\xC3\xA9", invalid},
      {"https://h/p?\xC3\xA9", invalid},
      {"https://h/%zz", invalid},
      {"https://h/%4", invalid},
      {"https://h/p?100%", invalid},
      {"https://h/a|b", invalid},
      {"https://h/a b", invalid},
      {"https://h/{id}", invalid},
      {"https://h/\"", invalid},
      {"https://h/p#a#b", invalid},
      {"https://h/a\nb", invalid},
      {std::string("https://h/a\0b", 13), invalid},
      {"1https://h/", invalid},
  };
  for (const auto& [text, verdict] : cases) {
    EXPECT_EQ(URL::parse(text).has_value(), verdict == valid) << text;
    const auto tolerated = URL::parse(text, URL::Brackets::tolerated);
    EXPECT_EQ(tolerated.has_value(), verdict != invalid) << text;
    if (tolerated) {
      EXPECT_EQ(tolerated->text(), text);
    }
  }
}

TEST(URL, PartsAreKeptAsTheyAreWritten) {
  const struct {
    const char* text;
    const char* scheme;
    const char* host;
    std::optional<std::string_view> query;
    const char* withOtherQuery;
  } cases[] = {
      {"HTTPS://u@Example.COM:1/p?a=%61#f?g", "HTTPS", "Example.COM", "a=%61",
       "HTTPS://u@Example.COM:1/p?new#f?g"},
      {"http://[::1]/?[M]", "http", "::1", "[M]", "http://[::1]/?new"},
      {"http://h?#f", "http", "h", "", "http://h?new#f"},
      {"http://h/?", "http", "h", "", "http://h/?new"},
      {"http://h/p#f?a=1", "http", "h", std::nullopt, nullptr},
      {"file:///p?q", "file", "", "q", "file:///p?new"},
      {"?q", "", "", "q", "?new"},
  };
  for (const auto& each : cases) {
    const auto url = URL::parse(each.text, URL::Brackets::tolerated);
    ASSERT_TRUE(url) << each.text;
    EXPECT_EQ(url->scheme(), each.scheme);
    EXPECT_EQ(url->host(), each.host);
    EXPECT_EQ(url->query(), each.query);
    if (each.withOtherQuery) {
      EXPECT_EQ(url->textWithQuery("new"), each.withOtherQuery);
    }
  }
}

TEST(Query, ItemsAreDecodedAndWrittenAgain) {
  const struct {
    const char* encoded;
    std::vector<const char*> items;  // Names and values in turn; null for no value.
    const char* written;
  } cases[] = {
      {"", {}, ""},
      {"a=1&b=2", {"a", "1", "b", "2"}, "a=1&b=2"},
      {"%61=%62%2B+", {"a", "b++"}, "a=b++"},
      {"a&b=&=c&", {"a", nullptr, "b", "", "", "c", "", nullptr}, "a&b=&=c&"},
      {"&&", {"", nullptr, "", nullptr, "", nullptr}, "&&"},
      {"a=b=c%26", {"a", "b=c&"}, "a=b=c%26"},
      {"a%3Db=%3d", {"a=b", "="}, "a%3Db=="},
      {"%c3%a9=%20%25%5B%7c", {"\xC3\xA9", " %[|"}, "%C3%A9=%20%25%5B%7C"},
      {"-._~!$'()*+,;:@/?=", {"-._~!$'()*+,;:@/?", ""}, "-._~!$'()*+,;:@/?="},
      {"%zz%4", {"%zz%4", nullptr}, "%25zz%254"},
  };
  for (const auto& [encoded, expected, written] : cases) {
    const auto items = parseQuery(encoded);
    ASSERT_EQ(items.size() * 2, expected.size()) << encoded;
    for (std::size_t i = 0; i < items.size(); ++i) {
      EXPECT_EQ(items[i].name, expected[2 * i]) << encoded;
      const char* value = expected[2 * i + 1];
      EXPECT_EQ(items[i].value, value ? std::optional<std::string>(value) : std::nullopt)
          << encoded;
    }
    EXPECT_EQ(writeQuery(items), written);
  }
}

}  // namespace
}  // namespace xel
