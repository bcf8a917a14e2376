#include <cstdlib>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "xel/platform/JSONValue.h"

namespace xel {
namespace {

JSONValue parsed(std::string_view text) {
  const auto result = JSONValue::parse(text);
  EXPECT_FALSE(result.error) << result.error->description;
  return result.value;
}

std::string readableAs(const JSONValue& value) {
  return std::string(value ? "value" : "") + (value.text() ? " text" : "") +
         (value.integer() ? " integer" : "") + (value.number() ? " number" : "") +
         (value.boolean() ? " boolean" : "") + (value.elements().empty() ? "" : " elements") +
         (value.isObject() ? " object" : "");
}

TEST(JSONValue, ReadsOnlyAsWhatItIs) {
  const JSONValue document = parsed(
      R"({"text":"é\u00e9\ud83d\ude00\n","number":1,"true":true,"null":null,"array":[1],"object":{}})");
  EXPECT_EQ(document["text"].text(), "éé😀\n");
  EXPECT_EQ(readableAs(document["text"]), "value text");
  EXPECT_EQ(readableAs(document["number"]), "value integer number");
  EXPECT_EQ(readableAs(document["true"]), "value boolean");
  EXPECT_EQ(readableAs(document["null"]), "value");
  EXPECT_EQ(readableAs(document["array"]), "value elements");
  EXPECT_EQ(readableAs(document["object"]), "value object");
  EXPECT_TRUE(document.has("null"));
  EXPECT_FALSE(document.has("Null"));
  for (const JSONValue& nowhere : {JSONValue(), document["Null"], document["array"]["0"]["a"]}) {
    EXPECT_EQ(readableAs(nowhere), "");
    EXPECT_FALSE(nowhere.has("a"));
    EXPECT_EQ(nowhere.serialize(), "null");
    EXPECT_FALSE(nowhere.withMember("a", "b"));
    nowhere.forEachMember([](auto, const auto&) { FAIL(); });
  }
}

TEST(JSONValue, OfMembersWithTheSameNameTheLastCounts) {
  const JSONValue document = parsed(R"({"a":1,"b":2,"\u0061":{"c":1,"c":[]}})");
  EXPECT_EQ(document["a"].serialize(), R"({"c":[]})");
  std::size_t members = 0;
  document.forEachMember([&](auto, const auto&) { ++members; });
  EXPECT_EQ(members, 2u);
}

std::string nested(int depth) {
  std::string text = "1";
  for (int i = 0; i < depth; ++i) text = i % 2 ? "[" + text + "]" : R"({"a":)" + text + "}";
  return text;
}

TEST(JSONValue, TellsWhyATextIsRefused) {
  const std::map<JSONError, std::vector<std::string>> refused = {
      {JSONError::incomplete, {"", " \n", "\xEF\xBB\xBF", R"({"a":)", R"(["a)"}},
      {JSONError::syntax,
       {"[1,]", R"({"a":1,})", "{a:1}", "{'a':1}", "[NaN]", "[01]", "[1] // one", "{} {}", "<html>",
        "[\"\xFF\"]", "[\"\xED\xA0\x80\"]", R"(["\ud800"])", "[\"\n\"]", std::string("[1\0]", 4)}},
      {JSONError::tooDeep, {nested(513), std::string(100000, '[')}},
      {JSONError::bareScalar, {"1", R"("a")", "null", "true ", "\xEF\xBB\xBF-1.5e3"}}};
  for (const auto& [code, texts] : refused) {
    for (const std::string& text : texts) {
      const auto [value, error] = JSONValue::parse(text);
      ASSERT_TRUE(error && !value) << text;
      EXPECT_EQ(error->code, static_cast<int>(code)) << text << error->description;
      EXPECT_EQ(error->domain, jsonErrorDomain);
    }
  }
  EXPECT_TRUE(JSONValue::parse("{\"a\" 1}").error->description.starts_with("Not JSON at byte 5:"));
  EXPECT_EQ(parsed("\xEF\xBB\xBF [1,2] ").elements().size(), 2u);
  EXPECT_EQ(parsed(nested(512)).serialize(), nested(512));
}

TEST(JSONValue, IntegersAreTruncatedAndFitOrAreAbsent) {
  const auto number = [](const std::string& text) {
    return parsed("[" + text + "]").elements()[0];
  };
  EXPECT_EQ(number("1.9").integer(), 1);
  EXPECT_EQ(number("-1.9").integer(), -1);
  EXPECT_EQ(number("1e-999").integer(), 0);
  EXPECT_EQ(number("4e2").integer(), 400);
  EXPECT_EQ(number("9223372036854775807").integer(), INT64_MAX);
  EXPECT_EQ(number("-9.223372036854775808e18").integer(), INT64_MIN);
  for (const char* text : {"9223372036854775808", "-9223372036854777857", "18446744073709551615",
                           "18446744073709551616", "123456789012345678901234567890", "1e308"}) {
    EXPECT_EQ(number(text).integer(), std::nullopt) << text;
    EXPECT_EQ(number(text).number(), std::strtod(text, nullptr));
  }
  for (const char* text : {"1e999", "-1e999"}) {
    EXPECT_EQ(readableAs(number(text)), "value");
    EXPECT_EQ(number(text).serialize(), "null");
  }
}

TEST(JSONValue, DecimalsAreReadExactly) {
  std::mt19937_64 random(17);
  std::vector<std::string> texts;
  std::string document = "[0";
  for (int i = 0; i < 50000; ++i) {
    std::string digits = std::to_string(10000000000000000 + random() % 90000000000000000);
    digits.insert(1 + random() % 16, ".");
    if (i % 2) digits += "e" + std::to_string(static_cast<int>(random() % 600) - 310);
    document += "," + digits;
    texts.push_back(std::move(digits));
  }
  const auto elements = parsed(document + "]").elements();
  ASSERT_EQ(elements.size(), texts.size() + 1);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(elements[i + 1].number(), std::strtod(texts[i].c_str(), nullptr)) << texts[i];
  }
}

TEST(JSONValue, AMemberIsSetInACopyThatKeepsTheRest) {
  const JSONValue before = parsed(R"({"z":1.5,"m":null,"a":[{"b":"\"\u0001"}]})");
  const JSONValue after = before.withMember("m", "\"new\"").withMember("n", "");
  EXPECT_EQ(after.serialize(), R"({"z":1.5E0,"m":"\"new\"","a":[{"b":"\"\u0001"}],"n":""})");
  EXPECT_EQ(before.serialize(), R"({"z":1.5E0,"m":null,"a":[{"b":"\"\u0001"}]})");
  EXPECT_FALSE(before["a"].withMember("m", "x"));
}

TEST(JSONValue, AHandleOutlivesAllOthersOfItsDocument) {
  JSONValue handle = parsed(R"({"a":[{"b":{"c":")" + std::string(1000, 'x') + R"("}}]})");
  handle = handle["a"].elements()[0]["b"];
  const JSONValue copy = handle.withMember("d", "e");
  handle = handle["c"];
  EXPECT_EQ(handle.text(), std::string(1000, 'x'));
  EXPECT_EQ(copy["c"].text(), handle.text());
}

}  // namespace
}  // namespace xel
