#include <utility>

#include <gtest/gtest.h>

#include "platform/Text.h"

namespace xel {
namespace {

TEST(Text, FillsEachPlaceholderOnceAndLeavesWhatWasFilledInAlone) {
  EXPECT_EQ(fillTemplate("%@-%d/%@%@", {"%@", std::nullopt, ""}), "%@-(null)/%@");
}

TEST(Text, ReadsTheIntegerThatATextBeginsWith) {
  constexpr std::pair<const char*, std::int64_t> cases[] = {{"+7px", 7},
                                                            {"-12.9", -12},

                                                            {"", 0},
                                                            {"px1", 0},
                                                            {"+", 0},

                                                            {"+-5", 0},

                                                            {"--5", 0},
                                                            {"9223372036854775807", INT64_MAX},
                                                            {"+9223372036854775808", INT64_MAX},
                                                            {"-99999999999999999999x", INT64_MIN}};
  for (const auto& [text, value] : cases) EXPECT_EQ(leadingInteger(text), value) << text;
}

TEST(Text, TellsUTF8FromOtherBytes) {
  for (const char* good : {"", "a\x7F", "\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                           "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(isUTF8(good)) << good;
  }
  for (const char* bad :
       {"\x80", "\xC1\xBF", "\xC3", "\xC3\x28", "\xE0\x9F\xBF", "\xED\xA0\x80", "a\xE2\x82",
        "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
    EXPECT_FALSE(isUTF8(bad)) << bad;
  }
}

}  // namespace
}  // namespace xel
