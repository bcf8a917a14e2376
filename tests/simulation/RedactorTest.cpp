#include <gtest/gtest.h>

#include "xel/session/XELVODStreamRequest.h"

#include "simulation/trace/Redactor.h"
#include "simulation/trace/SessionSecrets.h"

namespace xel::simulation {
namespace {

struct Case {
  const char* text;
  const char* redacted;
};

TEST(Redactor, ReplacesSecretsHoweverTheyAreWritten) {
  Redactor redactor(false);
  for (const auto* secret : {"k&y/\"ä 1", "abc", "00000000-0000-0000-0000-000000000000", "",
                             "123456", "01234567-89AB-4CDE-8F01-23456789ABCD"}) {
    redactor.addSecret(secret);
  }
  redactor.addParameters("user=77&mail=a.b%40c12&on=1&likes=news&kind=live&age=1984&bare");
  for (const auto* secret : {"12e45678", "7654321", "secretone1", "one1secret2", "a\\nb&c"})
    redactor.addSecret(secret);
  const Case cases[] = {
      {"k&y/\"ä 1k&y/\"ä 1", "redacted-1redacted-1"},
      {"a=k%26y%2f%22%C3%A4%201&b", "a=redacted-1&b"},
      {"a=k%26y/%22%C3%A4+1", "a=redacted-1"},
      {"a%3Dk%2526y%252F%2522%25C3%25A4%25201", "a%3Dredacted-1"},
      {R"({"x":"k\u0026y\/\"\u00e4 1"})", R"({"x":"redacted-1"})"},
      {R"("<![CDATA[k&y/\"ä 1]]><a b=\"k&amp;y/&quot;&#xE4; 1\"/>")",
       R"("<![CDATA[redacted-1]]><a b=\"redacted-1\"/>")"},
      {R"({"e":"{\"k\":\"k&y\\/\\\"ä 1\"}"})", R"({"e":"{\"k\":\"redacted-1\"}"})"},
      {"<a b='k&amp;amp;y/&amp;quot;&amp;#xE4; 1'/>", "<a b='redacted-1'/>"},
      {"a=k%5Cu0026y%5C%2F%5C%22%C3%A4%201", "a=redacted-1"},
      {"a=k%5Cu0026amp%3By%5C%2F%26quot%3B%C3%A4%201", "a=redacted-1"},
      {"abc", "redacted-2"},
      {"xabc abc a=abcd", "xabc abc a=abcd"},
      {"?a=abc&b=abc#c", "?a=redacted-2&b=redacted-2#c"},
      {R"({"abc":"abc","d":"x\"abc\""})", R"({"abc":"redacted-2","d":"x\"redacted-2\""})"},
      {"00000000-0000-0000-0000-000000000000", "00000000-0000-0000-0000-000000000000"},
      {R"({"n":123456,"m":0.123456,"s":"a-123456"})",
       R"({"n":"redacted-3","m":0.123456,"s":"a-redacted-3"})"},
      {"1234567 /123456.1.jpg v2.123456 x123456y",
       "1234567 /redacted-3.1.jpg v2.redacted-3 xredacted-3y"},
      {"[123456, -123456,123456.0,1e123456 ,123456.05, 10.123456]",
       "[\"redacted-3\", \"redacted-3\",\"redacted-3\",\"redacted-3\" ,123456.05, 10.123456]"},
      {"01234567-89ab-4cde-8f01-23456789abcd 0123456789AB4CDE8F0123456789ABCD",
       "00000000-0000-4000-8000-000000000004 00000000000040008000000000000004"},
      {"?user=77&superuser=77&x=77&user=777", "?user=redacted-5&superuser=77&x=77&user=777"},
      {"/a.b%40c12/a.b@c12/user%3D77", "/redacted-6/redacted-6/user=redacted-5"},
      {"news, newsletter, x_news=news&on=1&x=1",
       "redacted-8, newsletter, x_news=redacted-8&on=redacted-7&x=1"},
      {"kind=live&x=live, age=1984 but 1984", "kind=redacted-9&x=live, age=redacted-10 but 1984"},
      {"bare.example/bare", "redacted-11.example/redacted-11"},
      {R"({"x":12e45678e7654321,"y":"other 7654321 end"})",
       R"({"x":redacted-12"redacted-13","y":"other redacted-13 end"})"},
      {"secretone1secret2, one1secret2", "redacted-14, redacted-15"},
      {"<a b='a\\nb&amp;c'/>", "<a b='redacted-16'/>"},
  };
  for (const auto& [text, redacted] : cases) {
    EXPECT_EQ(redactor.text(text), redacted);
    EXPECT_EQ(redactor.text(redacted), redacted) << "once is enough";
  }
  EXPECT_EQ(redactor.headerValue("AUTHORIZATION", "KEY abc=\"abc\""), "KEY abc=\"redacted-2\"");
  const auto other = redactor.headerValue("Authorization", "Bearer x");
  EXPECT_EQ(other.rfind("redacted-", 0), 0u);
  EXPECT_EQ(redactor.headerValue("Set-Cookie", "Bearer x"), other);
  EXPECT_EQ(redactor.headerValue("Date", "abcd"), "abcd");
}

TEST(Redactor, KnowsTheSecretsOfARequest) {
  const auto request = XELVODStreamRequest::initWithContentSourceID_videoID("source", "video");
  request->setAdTagParameters(
      {{"cust_params", "user%3Dalice77xy%26email%3Dbob%40mail.example"}, {"ppid", "true"}});
  Redactor redactor(false);
  addSecrets(redactor, *request);
  const Case cases[] = {
      {"c=user%3Dalice77xy%26email%3Dbob%40mail.example", "c=redacted-1"},
      {"alice77xy email=bob%40mail.example bob@mail.example",
       "redacted-2 email=redacted-3 redacted-3"},
      {"ppid=true&x=truer", "ppid=redacted-4&x=truer"},
      {R"({"ppid":"true","true":true})", R"({"ppid":"redacted-4","true":true})"},
  };
  for (const auto& [text, redacted] : cases) EXPECT_EQ(redactor.text(text), redacted);
}

TEST(Redactor, ReplacesTheQueryValuesOfURLsButNotTheirForm) {
  Redactor redactor(true);
  redactor.keepInURLs("t.1.0");
  redactor.keepInURLs("ads.example");
  const Case cases[] = {
      {"see https://h/p/1?a=x1&b=y.2_~-&=z&c&d= or\nx=1",
       "see https://h/p/1?a=redacted-1&b=redacted-2&=redacted-3&redacted-4&d= redacted-5\nx=1"},
      {"//h?a=x1#f=y.2_~-", "//h?a=redacted-1#f=redacted-2"},
      {"https://h?a=x%31%26x1=z/+(x1)",
       "https://h?a=redacted-1%26redacted-1=redacted-3/+(redacted-1)"},
      {"https://h?a=[TIME-STAMP]&b=%5BX%5D&c=x1[SDKV]z&d=x1t.1.0z&e=[x1 z]/f='z' z",
       "https://h?a=[TIME-STAMP]&b=%5BX%5D&c=redacted-1[SDKV]redacted-3&d=redacted-1t.1.0redacted-3"
       "&e=[redacted-1 redacted-3]/redacted-6='redacted-3' z"},
      {"https://h?sdkv=t.2&ssss=xel&r=https://ads.example/p?q=x1&s=z&t=ads.examplez",
       "https://h?sdkv=t.2&ssss=xel&r=https://ads.example/"
       "p?q=redacted-1&s=redacted-3&t=ads.exampleredacted-3"},
      {"r=https%3A%2F%2Fh%2Fp%3Fq%3Dx1%26n%3D%2578%2531&x=z",
       "r=https%3A%2F%2Fh%2Fp%3Fq%3Dredacted-1%26n%3Dredacted-1&x=z"},
      {"https://o?r=https%3A%2F%2Fh%2Fp%3Fq%3Dx1%26n%3Dz&x=z",
       "https://o?r=https%3A%2F%2Fh%2Fp%3Fq%3Dredacted-1%26n%3Dredacted-3&x=redacted-3"},
      {R"({"vast":"<A u=\"https:\/\/h?a=x1&amp;b=z\u0026amp;c=x1\"><![CDATA[https://h?a=z]]>"})",
       R"({"vast":"<A u=\"https:\/\/h?a=redacted-1&amp;b=redacted-3\u0026amp;c=redacted-1\"><![CDATA[https://h?a=redacted-3]]>"})"},
      {"https://h?x1;z&amp;b;c=z&#38;d=x1&z",
       "https://h?redacted-1;redacted-3&amp;b;c=redacted-3&#38;d=redacted-1&redacted-3"},
      {"<a u='//x1:z@h/p;x1/q;s=z;x1?z' v='x1'>https://h/p q;z",
       "<a u='//redacted-1:redacted-3@h/p;redacted-1/q;s=redacted-3;redacted-1?redacted-3' "
       "v='x1'>https://h/p q;redacted-3"},
      {"a=x1", "a=x1"},
      {"https://h?a=\\", "https://h?a=\\"},
      {"https://h?a=%2", "https://h?a=%redacted-7"},
  };
  for (const auto& [text, redacted] : cases) {
    EXPECT_EQ(redactor.text(text), redacted);
    EXPECT_EQ(redactor.text(redacted), redacted) << "once is enough";
  }
  EXPECT_EQ(redactor.url("b=x1&c=z"), "b=redacted-1&c=redacted-3") << "the rest of a URL";
  EXPECT_EQ(redactor.url("\n https://b=z/?c=z"), "\n https://b=z/?c=redacted-3");
}

}  // namespace
}  // namespace xel::simulation
