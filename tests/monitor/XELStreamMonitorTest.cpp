#include "support/Session.h"

namespace xel::test {
namespace {

using Times = std::vector<double>;

struct OverrunCase {
  const char* behaviour;
  const char* ads;
  const char* breaks;
  Times ticks;
  Lines expected;
};

class Overrun : public SessionTest, public testing::WithParamInterface<OverrunCase> {};

TEST_P(Overrun, EndsTheBreakAtOneSecondAfterTheLastCountdown) {
  openVOD(
      R"({"times": {"100": [{"type": "start", "ad": "a"}], "104": [{"type": "start", "ad": "b"}]},
              "ads": {)" +
      std::string(GetParam().ads) + R"(}, "breaks": {)" + GetParam().breaks + "}}");
  happened();
  countdowns = true;
  progress(GetParam().ticks);
  EXPECT_EQ(happened(), GetParam().expected);
}

constexpr const char* oneAd =
    R"("a": {"break": "x", "duration": 10, "position": 1, "vast": "<VAST><Ad/></VAST>"})";
constexpr const char* secondAd =
    R"("a": {"break": "x", "duration": 4, "position": 1},
       "b": {"break": "x", "duration": 10, "position": 2, "vast": "<VAST><Ad/></VAST>"})";

INSTANTIATE_TEST_SUITE_P(
    , Overrun,
    testing::Values(
        OverrunCase{"OfTheAd",
                    oneAd,
                    R"("x": {"ads": 1, "duration": 60})",
                    {99, 100, 105, 110.75, 111, 111.5},
                    {"adBreakDidStart x (1 ads, 60 s)", "adDidStart a", "didCountdownTo a 5",
                     "didCountdownTo a -0.75", "didCountdownTo a -1", "adBreakDidEnd x"}},
        OverrunCase{"OfTheBreak",
                    oneAd,
                    R"("x": {"ads": 1, "duration": 5})",
                    {100, 105.75, 106, 107},
                    {"adBreakDidStart x (1 ads, 5 s)", "adDidStart a", "didCountdownTo a 4.25",
                     "didCountdownTo a 4", "adBreakDidEnd x"}},
        OverrunCase{
            "OfABreakThatBeganWithTheAdsBefore",
            secondAd,
            R"("x": {"ads": 3, "duration": 9})",
            {104, 109.75, 110, 111},
            {"adDidStart b", "didCountdownTo b 4.25", "didCountdownTo b 4", "adBreakDidEnd x"}},
        OverrunCase{"OfABreakOfUnknownDuration",
                    oneAd,
                    "",
                    {100, 100.5, 101},
                    {"adBreakDidStart x (-1 ads, 0 s)", "adDidStart a", "didCountdownTo a 9.5",
                     "didCountdownTo a 9", "adBreakDidEnd x"}},
        OverrunCase{"ButNotOfAnAdSoughtBack",
                    oneAd,
                    R"("x": {"ads": 1, "duration": 10})",
                    {100, 105, 90, 110.5},
                    {"adBreakDidStart x (1 ads, 10 s)", "adDidStart a", "didCountdownTo a 5",
                     "didCountdownTo a 20", "didCountdownTo a -0.5"}}),
    [](const auto& info) { return info.param.behaviour; });

struct BookkeepingCase {
  const char* behaviour;
  const char* position;
  const char* breaks;
  bool endsAtFirstComplete;
};

class Bookkeeping : public SessionTest, public testing::WithParamInterface<BookkeepingCase> {};

TEST_P(Bookkeeping, TellsWhetherACompleteEndsTheBreak) {
  openVOD(R"({"times": {"0": [{"type": "start", "ad": "a"}, {"type": "complete", "ad": "a"}]},
              "ads": {"a": {"break": "x", "vast": "<VAST><Ad/></VAST>")" +
          std::string(GetParam().position) + R"(}}, "breaks": {)" + GetParam().breaks + "}}");
  progress({0});
  const bool ended = host->events().back().line == "adBreakDidEnd x";
  EXPECT_EQ(ended, GetParam().endsAtFirstComplete);
  EXPECT_EQ(host->events().at(host->events().size() - (ended ? 2 : 1)).line, "adDidComplete a");
}

INSTANTIATE_TEST_SUITE_P(
    , Bookkeeping,
    testing::Values(
        BookkeepingCase{"LastOfItsBreak", R"(, "position": 2)", R"("x": {"ads": 2})", true},
        BookkeepingCase{"NotTheLast", R"(, "position": 1)", R"("x": {"ads": 2})", false},
        BookkeepingCase{"BeyondTheLast", R"(, "position": 3)", R"("x": {"ads": 2})", false},
        BookkeepingCase{"PositionTruncated", R"(, "position": 2.9)", R"("x": {"ads": 2})", true},
        BookkeepingCase{"NoPosition", "", R"("x": {"ads": 2})", true},
        BookkeepingCase{"PositionThatIsText", R"(, "position": "1")", R"("x": {"ads": 2})", true},
        BookkeepingCase{"PositionTooLarge", R"(, "position": 1e40)", R"("x": {"ads": 2})", true},
        BookkeepingCase{"NoTotal", R"(, "position": 1)", R"("x": {})", true},
        BookkeepingCase{"TotalThatIsBoolean", R"(, "position": 1)", R"("x": {"ads": true})", true},
        BookkeepingCase{"NoBreak", R"(, "position": 1)", "", true}),
    [](const auto& info) { return info.param.behaviour; });

class UnusableVast : public SessionTest, public testing::WithParamInterface<const char*> {};

TEST_P(UnusableVast, IsLoggedOnceAndLeavesNoAd) {
  openVOD(R"({"times": {"0": [{"type": "start", "ad": "a"}],
                        "1": [{"type": "start", "ad": "bad"}, {"type": "midpoint", "ad": "bad"},
                              {"type": "complete", "ad": "bad"}, {"type": "midpoint", "ad": "a"}]},
              "ads": {"a": {"break": "x", "position": 1, "duration": 9, "vast": "<VAST><Ad/></VAST>"},
                      "bad": {"position": 1)" +
          std::string(GetParam()) + R"(}}, "breaks": {"x": {"ads": 1, "duration": 9}}})");
  happened();
  countdowns = true;
  progress({0, 1, 2, 1, 30});
  EXPECT_EQ(happened(),
            (Lines{"adBreakDidStart x (1 ads, 9 s)", "adDidStart a", "didCountdownTo a 8"}));
  expectedLog = {"Internal Error: No tracking pings for current ad."};
}

INSTANTIATE_TEST_SUITE_P(, UnusableVast,
                         testing::Values("", R"(, "vast": "")", R"(, "vast": 3)",
                                         R"(, "vast": "no XML")", R"(, "vast": "<VAST></VAST>")",
                                         R"(, "vast": "<VAST><Ad><InLine></VAST>")"));

TEST_F(SessionTest, TheFirstUsableAdOfTheVastIsPlayedWithItsFirstLinearCreative) {
  openVOD(R"({"times": {"7": [{"type": "start", "ad": "b"}]},
      "ads": {"a": {"break": "x", "position": 1, "duration": 2.5},
              "b": {"break": "x", "position": 2, "duration": 10.1, "vast": ")"
          "<VAST><Ad id='one'><InLine><Creatives>"
          "<Creative id='non'><NonLinear/></Creative>"
          "<Creative id='first'><Linear/></Creative>"
          "<Creative id='second'><Linear/></Creative></Creatives></InLine></Ad>"
          R"(<Ad id='two'/></VAST>"}},
      "breaks": {"x": {"ads": 2, "duration": 12.6}},
      "cuepoints": [{"start": 2, "end": 3}, {"start": 4.5, "end": 17}]})");
  progress({7.25});
  const auto& ad = host->events().back().ad;
  ASSERT_TRUE(ad);
  EXPECT_EQ(ad->adID(), "one");
  EXPECT_EQ(ad->adKey(), "b");
  EXPECT_EQ(ad->adPosition(), 2);
  EXPECT_EQ(ad->duration(), 10.1f);
  EXPECT_EQ(ad->adStartTime(), 7.25);
  EXPECT_EQ(ad->adBreakInfo()->adBreakKey(), "x");
  EXPECT_EQ(ad->adBreakInfo()->totalAds(), 2);
  EXPECT_EQ(ad->adBreakInfo()->duration(), 12.6f);
  EXPECT_EQ(ad->adBreakInfo()->adBreakIndex(), 1);
  EXPECT_EQ(ad->adBreakInfo()->timeOffset(), 4.5);
  ASSERT_TRUE(ad->selectedCreative());
  EXPECT_EQ(ad->selectedCreative()->adID(), "first");
}

}  // namespace
}  // namespace xel::test
