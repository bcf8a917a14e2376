#include <cstdlib>
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

TEST(JSONValue, TellsWhyATextIsNotJSON) {
  using enum JSONError;
  const std::pair<std::string, JSONError> cases[] = {{"", incomplete},
                                                     {" \n", incomplete},
                                                     {"\xEF\xBB\xBF", incomplete},
                                                     {R"({"a":)", incomplete},
                                                     {R"(["a)", incomplete},
                                                     {"[1,]", syntax},
                                                     {R"({"a":1,})", syntax},
                                                     {"{a:1}", syntax},
                                                     {"{'a':1}", syntax},
                                                     {"[NaN]", syntax},
                                                     {"[01]", syntax},
                                                     {"[1] // one", syntax},
                                                     {"{} {}", syntax},
                                                     {"<html>", syntax},
                                                     {"[\"\xFF\"]", syntax},
                                                     {"[\"\xED\xA0\x80\"]", syntax},
                                                     {R"(["\ud800"])", syntax},
                                                     {"[\"\n\"]", syntax},
                                                     {std::string("[1\0]", 4), syntax},
                                                     {nested(513), tooDeep},
                                                     {std::string(100000, '['), tooDeep},
                                                     {"1", bareScalar},
                                                     {R"("a")", bareScalar},
                                                     {"null", bareScalar},
                                                     {"true ", bareScalar},
                                                     {"\xEF\xBB\xBF-1.5e3", bareScalar}};
  for (const auto& [text, code] : cases) {
    const auto [value, error] = JSONValue::parse(text);
    ASSERT_TRUE(error && !value) << text;
    EXPECT_EQ(error->code, static_cast<int>(code)) << text << error->description;
    EXPECT_EQ(error->domain, jsonErrorDomain);
  }
  EXPECT_TRUE(JSONValue::parse("{\"a\" 1}").error->description.starts_with("Not JSON at byte 5:"));
}

TEST(JSONValue, AcceptsAByteOrderMarkAnArrayAnd512Levels) {
  EXPECT_EQ(parsed("\xEF\xBB\xBF [1,2] ").elements().size(), 2u);
  EXPECT_EQ(parsed(nested(512)).serialize(), nested(512));
}

TEST(JSONValue, IntegersAreTruncatedAndFitOrAreAbsent) {
  const struct {
    const char* text;
    std::optional<std::int64_t> integer;
    std::optional<double> number;
  } cases[] = {{"-0", 0, 0.0},
               {"1.9", 1, 1.9},
               {"-1.9", -1, -1.9},
               {"1e-999", 0, 0.0},
               {"4e2", 400, 400.0},
               {"9223372036854775807", INT64_MAX, 0x1p63},
               {"9223372036854775808", {}, 0x1p63},
               {"-9223372036854775808", INT64_MIN, -0x1p63},
               {"-9.223372036854775808e18", INT64_MIN, -0x1p63},
               {"-9223372036854777857", {}, -9223372036854777857.0},
               {"18446744073709551615", {}, 0x1p64},
               {"18446744073709551616", {}, 0x1p64},
               {"1e308", {}, 1e308},
               {"1e999", {}, {}},
               {"-1e999", {}, {}},
               {"123456789012345678901234567890", {}, 123456789012345678901234567890.0}};
  for (const auto& [text, integer, number] : cases) {
    const JSONValue value = parsed("[" + std::string(text) + "]").elements()[0];
    EXPECT_EQ(value.integer(), integer) << text;
    EXPECT_EQ(value.number(), number) << text;
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
