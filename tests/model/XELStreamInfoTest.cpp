#include <limits>

#include <gtest/gtest.h>

#include "model/XELStreamInfo.h"

namespace xel {
namespace {

std::shared_ptr<XELStreamInfo> streamInfo(const std::string& text) {
  const auto [document, error] = JSONValue::parse(text);
  EXPECT_FALSE(error) << text;
  return XELStreamInfo::initWithStreamInfo(document);
}

/// What every lookup answers for "k"; in a document that tells nothing, `nothing`.
std::string answers(const XELStreamInfo& info) {
  const auto each = [](auto value) { return std::to_string(value) + " "; };
  return info.eventForMetadata("k") + "|" + info.adKeyForMetadata("k") + "|" +
         info.adBreakKeyForAdKey("k") + "|" + info.vastForAdKey("k") + "|" +
         each(info.adPositionForAdKey("k")) + each(info.durationForAdKey("k")) +
         each(info.totalAdsForAdBreakKey("k")) + each(info.durationForAdBreakKey("k")) +
         each(info.previousAdsDurationForAdKey("k")) + each(info.eventArrayForTime(12).size()) +
         each(info.cuepoints().size());
}
const std::string nothing = "||||-1 0.000000 -1 0.000000 0.000000 0 0 ";

TEST(XELStreamInfo, AnswersFromTheDocument) {
  const auto info = streamInfo(R"({
      "tags": {"k": {"type": "Start", "ad": "a1"}, "k ": {}, "K": {"type": "no"}},
      "ads": {"k": {"break": "b", "vast": "<VAST/>", "position": 3.9, "duration": 10.1},
              "a1": {"break": "b", "position": 1, "duration": 15},
              "a2": {"break": "b", "position": 2, "duration": 20},
              "same": {"break": "b", "position": 3, "duration": 100},
              "zeroth": {"break": "b", "position": 0, "duration": 100},
              "unplaced": {"break": "b", "duration": 100},
              "elsewhere": {"break": "B", "position": 1, "duration": 100},
              "homeless": {"position": 2, "duration": 5},
              "homeless too": {"break": 7, "position": 1, "duration": 6}},
      "breaks": {"k": {"ads": 3, "duration": 45.1}},
      "times": {"12": [{"type": "start", "ad": "k"}, {"type": "Other"}], "-3": [1], "0": [2, 3, 4]},
      "cuepoints": [{"start": 300.1, "end": 330}, {"end": 7}, {"start": 0, "end": 30}, {"start": 100},
                    {"start": 300.1, "end": 1}, 5, {"start": "1", "end": 2}]})");
  EXPECT_EQ(answers(*info), "Start|a1|b|<VAST/>|3 10.100000 3 45.099998 35.000000 2 3 ");
  EXPECT_EQ(info->durationForAdKey("k"), 10.100000381469727);
  EXPECT_EQ(info->eventForMetadata("k "), "");
  EXPECT_EQ(info->previousAdsDurationForAdKey("a1"), 0);
  EXPECT_EQ(info->previousAdsDurationForAdKey("unplaced"), 0);
  EXPECT_EQ(info->previousAdsDurationForAdKey("homeless"), 6);
  EXPECT_EQ(info->eventArrayForTime(12.9)[1]["type"].text(), "Other");
  EXPECT_EQ(info->eventArrayForTime(-3.9).size(), 1u);
  EXPECT_EQ(info->eventArrayForTime(-0.5).size(), 3u);

  std::string cuepoints;
  for (const auto& cuepoint : info->cuepoints()) cuepoints += cuepoint->description() + "; ";
  EXPECT_EQ(cuepoints,
            "Start: 0.000000, End: 30.000000, Played: No; "
            "Start: 300.100000, End: 330.000000, Played: No; "
            "Start: 300.100000, End: 1.000000, Played: No; ");
  info->cuepoints()[0]->setPlayed(true);
  EXPECT_FALSE(info->cuepoints()[0]->isPlayed());
  EXPECT_EQ(info->cuepoints()[1]->startTime(), 300.1);
}

TEST(XELStreamInfo, TakesWhatHasTheWrongTypeForMissing) {
  EXPECT_EQ(answers(*XELStreamInfo::initWithStreamInfo({})), nothing);
  for (const std::string wrong : {"null", "true", "[]", "{}", "[{}]", "1e999", "{\"k\":[7]}"}) {
    for (
        const std::string_view shape :
        {R"(@)", R"({"tags":@,"ads":@,"breaks":@,"times":@,"cuepoints":@})",
         R"({"tags":{"k":@},"ads":{"k":@},"breaks":{"k":@},"cuepoints":[@,@]})",
         R"({"tags":{"k":{"type":@,"ad":@}},"ads":{"k":{"break":@,"vast":@,"position":@,"duration":@},
              "x":@,"y":{"position":@}},"breaks":{"k":{"ads":@,"duration":@}},
              "cuepoints":[{"start":@,"end":1},{"start":1,"end":@}]})"}) {
      std::string document;
      for (const char c : shape) document += c == '@' ? wrong : std::string(1, c);
      if (document[0] != '{' && document[0] != '[') continue;
      EXPECT_EQ(answers(*streamInfo(document)), nothing) << document;
    }
  }
  EXPECT_EQ(answers(*streamInfo(
                R"({"times":{"12":{"0":1}},"ads":{"k":{"vast":1,"position":"1","duration":"9"}},
                                    "breaks":{"k":{"ads":9223372036854775808,"duration":1e39}}})")),
            nothing);
}

TEST(XELStreamInfo, LooksUpNoSecondForATimeThatIsNone) {
  const auto info = streamInfo(
      R"({"times":{"-9223372036854775808":[1],"9223372036854775807":[1],"0":[1],"nan":[1],"inf":[1]}})");
  using Limits = std::numeric_limits<double>;
  for (const double time :
       {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 0x1p63, 1e300}) {
    EXPECT_TRUE(info->eventArrayForTime(time).empty()) << time;
  }
  EXPECT_EQ(info->eventArrayForTime(-0x1p63).size(), 1u);
}

TEST(XELStreamInfo, FindsTheFirstCuepointThatHoldsATime) {
  const auto cuepoints = streamInfo(R"({"cuepoints":[{"start":300,"end":330},{"start":5,"end":30},
                                        {"start":320,"end":340},{"start":400,"end":390}]})")
                             ->cuepoints();
  const struct {
    double time;
    std::int64_t index;
    double offset;
  } cases[] = {{5, 0, 5},       {30, 0, 5},    {4.999, -1, 0},
               {30.001, -1, 0}, {300, 1, 300}, {325, 1, 300},
               {335, 2, 320},   {395, -1, 0},  {std::numeric_limits<double>::quiet_NaN(), -1, 0}};
  for (const auto& [time, index, offset] : cases) {
    EXPECT_EQ(XELStreamInfo::adBreakIndexForStartTime_cuepoints(time, cuepoints), index) << time;
    EXPECT_EQ(XELStreamInfo::timeOffsetForStartTime_cuepoints(time, cuepoints), offset) << time;
  }
  EXPECT_EQ(XELStreamInfo::adBreakIndexForStartTime_cuepoints(0, {}), -1);
  EXPECT_EQ(XELStreamInfo::timeOffsetForStartTime_cuepoints(0, {}), 0);
}

}  // namespace
}  // namespace xel
