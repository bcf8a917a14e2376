#include <cstdint>
#include <cstdlib>
#include <limits>
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

TEST(JSONValue, ReadsOnlyAsWhatItIs) {
  const JSONValue document = parsed(
      R"({"text":"é\u00e9\ud83d\ude00\n","number":1,"true":true,"null":null,"array":[1,"a"],"object":{}})");
  const auto types = [&](const char* name) {
    const JSONValue value = document[name];
    std::string kinds;
    if (value) kinds += "value ";
    if (value.text()) kinds += "text ";
    if (value.integer()) kinds += "integer ";
    if (value.number()) kinds += "number ";
    if (value.boolean()) kinds += "boolean ";
    if (!value.elements().empty()) kinds += "elements ";
    if (value.isObject()) kinds += "object ";
    return kinds;
  };
  EXPECT_EQ(types("text"), "value text ");
  EXPECT_EQ(types("number"), "value integer number ");
  EXPECT_EQ(types("true"), "value boolean ");
  EXPECT_EQ(types("null"), "value ");
  EXPECT_EQ(types("array"), "value elements ");
  EXPECT_EQ(types("object"), "value object ");
  EXPECT_EQ(types("Text"), "");
  EXPECT_EQ(document["text"].text(), "\xC3\xA9\xC3\xA9\xF0\x9F\x98\x80\n");
  EXPECT_TRUE(document.has("null"));
  EXPECT_FALSE(document.has("Text"));
  EXPECT_EQ(document["array"].elements()[1].text(), "a");
}

TEST(JSONValue, StepsThatLeadNowhereGiveEmptyHandles) {
  const JSONValue document = parsed(R"({"a":{"b":[{"c":1}]}})");
  for (const JSONValue& value : {JSONValue(), document["a"]["b"]["c"], document["a"]["x"]["b"]}) {
    EXPECT_FALSE(value);
    EXPECT_FALSE(value.has("c"));
    EXPECT_EQ(value.serialize(), "null");
    EXPECT_FALSE(value.withMember("a", "b"));
    value.forEachMember([](auto, const auto&) { FAIL(); });
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
  std::string text;
  for (int i = 0; i < depth; ++i) text += i % 2 ? "[" : R"({"a":)";
  text += "1";
  for (int i = depth; i-- > 0;) text += i % 2 ? "]" : "}";
  return text;
}

TEST(JSONValue, TellsWhyATextIsNotJSON) {
  const struct {
    std::string text;
    int code;
  } cases[] = {
      {"", 2},
      {" \n", 2},
      {"\xEF\xBB\xBF", 2},
      {R"({"a":)", 2},
      {"[1,2", 2},
      {R"(["a)", 2},
      {"[1,]", 1},
      {R"({"a":1,})", 1},
      {"{a:1}", 1},
      {"{'a':1}", 1},
      {"[NaN]", 1},
      {"[01]", 1},
      {"[1] // one", 1},
      {"{} {}", 1},
      {"<html>", 1},
      {"[\"\xFF\"]", 1},
      {"[\"\xED\xA0\x80\"]", 1},
      {R"(["\ud800"])", 1},
      {"[\"\n\"]", 1},
      {std::string("[1\0]", 4), 1},
      {"\xFE\xFF[]", 1},
      {nested(513), 3},
      {std::string(100000, '['), 3},
      {"1", 4},
      {R"("a")", 4},
      {"null", 4},
      {"true ", 4},
      {"-1.5e3", 4},
      {"\xEF\xBB\xBF\"a\"", 4},
  };
  for (const auto& [text, code] : cases) {
    const auto result = JSONValue::parse(text);
    ASSERT_TRUE(result.error) << text;
    EXPECT_EQ(result.error->code, code) << text.substr(0, 20) << result.error->description;
    EXPECT_EQ(result.error->domain, jsonErrorDomain);
    EXPECT_FALSE(result.value);
  }
  EXPECT_EQ(JSONValue::parse("{\"a\" 1}").error->description.substr(0, 16), "Not JSON at byte");
}

TEST(JSONValue, AcceptsAByteOrderMarkAnArrayAnd512Levels) {
  EXPECT_EQ(parsed("\xEF\xBB\xBF {\"a\":1} ")["a"].integer(), 1);
  EXPECT_EQ(parsed("[1,2]").elements().size(), 2u);
  EXPECT_EQ(parsed(nested(512)).serialize(), nested(512));
}

TEST(JSONValue, IntegersAreTruncatedAndFitOrAreAbsent) {
  using Limits = std::numeric_limits<std::int64_t>;
  const struct {
    const char* text;
    std::optional<std::int64_t> integer;
    std::optional<double> number;
  } cases[] = {
      {"-0", 0, 0.0},
      {"1.9", 1, 1.9},
      {"-1.9", -1, -1.9},
      {"1e-999", 0, 0.0},
      {"4e2", 400, 400.0},
      {"12345678901234567", 12345678901234567, 12345678901234567.0},
      {"9223372036854775807", Limits::max(), 0x1p63},
      {"9223372036854775808", {}, 0x1p63},
      {"-9223372036854775808", Limits::min(), -0x1p63},
      {"-9.223372036854775808e18", Limits::min(), -0x1p63},
      {"-9223372036854777857", {}, -9223372036854777857.0},
      {"18446744073709551615", {}, 0x1p64},
      {"18446744073709551616", {}, 0x1p64},
      {"9.3e18", {}, 9.3e18},
      {"1e308", {}, 1e308},
      {"1e999", {}, {}},
      {"-1e999", {}, {}},
      {"123456789012345678901234567890", {}, 123456789012345678901234567890.0},
  };
  for (const auto& [text, integer, number] : cases) {
    const auto element = parsed("[" + std::string(text) + "]").elements()[0];
    EXPECT_EQ(element.integer(), integer) << text;
    EXPECT_EQ(element.number(), number) << text;
  }
}

TEST(JSONValue, DecimalsAreReadExactly) {
  std::mt19937_64 random(17);
  std::vector<std::string> texts;
  std::string document = "[0";
  for (int i = 0; i < 50000; ++i) {
    std::string digits = std::to_string(10000000000000000 + random() % 90000000000000000);
    digits.insert(random() % digits.size() + 1, i % 2 ? "." : "");
    if (digits.back() == '.') digits += '0';
    if (i % 4 > 1) digits += "e" + std::to_string(static_cast<int>(random() % 600) - 310);
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
  const JSONValue replaced = before.withMember("m", "\"new\"");
  const JSONValue added = replaced.withMember("n", "");
  EXPECT_EQ(replaced["z"].number(), 1.5);
  EXPECT_EQ(added.serialize(), R"({"z":1.5E0,"m":"\"new\"","a":[{"b":"\"\u0001"}],"n":""})");
  EXPECT_EQ(before["m"].serialize(), "null");
  EXPECT_FALSE(before.has("n"));
  EXPECT_FALSE(before["a"].withMember("m", "x"));
}

TEST(JSONValue, AHandleOutlivesAllOthersOfItsDocument) {
  JSONValue deep;
  {
    const std::string text = R"({"a":[{"b":{"c":")" + std::string(1000, 'x') + R"("}}]})";
    deep = parsed(text)["a"].elements()[0]["b"];
  }
  const auto copy = deep.withMember("d", "e");
  deep = deep["c"];
  EXPECT_EQ(deep.text(), std::string(1000, 'x'));
  EXPECT_EQ(copy["c"].text(), deep.text());
}

}  // namespace
}  // namespace xel
