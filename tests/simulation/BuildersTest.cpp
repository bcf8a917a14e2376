#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xel/platform/JSONValue.h"
#include "xel/simulation/StreamInfoBuilder.h"
#include "xel/simulation/StreamInitAnswerBuilder.h"
#include "xel/simulation/VastBuilder.h"

#include "vast/XELVastParser.h"

namespace xel::simulation {
namespace {

using Texts = std::vector<std::string>;

TEST(VastBuilder, TextsReachTheAdAsTheyWereGiven) {
  const std::string awkward = "a&b <\"é\"> [X]]>\n";
  const std::string document = VastBuilder()
                                   .ad(awkward)
                                   .description("one\ntwo")
                                   .tracking("START", "https://a.example/?x=1&y=<2>")
                                   .creative("c1", 2)
                                   .universalAdId(awkward, "u")
                                   .creativeTracking("complete", "https://b.example/?[SDKV]")
                                   .companion(300, 250, "https://c.example/", "api")
                                   .build();
  const auto ads = XELVastParser::init()->parseVastDocument(document);
  ASSERT_EQ(ads.size(), 1u) << document;
  EXPECT_EQ(ads[0]->adID(), awkward);
  EXPECT_EQ(ads[0]->adTitle(), std::nullopt);
  EXPECT_EQ(ads[0]->adDescription(), "one\ntwo");
  EXPECT_EQ(ads[0]->trackingURLsForEvent("start"), Texts{"https://a.example/?x=1&y=<2>"});
  ASSERT_EQ(ads[0]->creatives().size(), 1u);
  const XELCreative& creative = *ads[0]->creatives()[0];
  EXPECT_EQ(creative.sequence(), 2);
  EXPECT_EQ(creative.universalAdIdRegistry(), awkward);
  EXPECT_EQ(creative.universalAdIdValue(), "u");
  EXPECT_EQ(creative.trackingURLsForEvent("complete"), Texts{"https://b.example/?[SDKV]"});
  ASSERT_EQ(ads[0]->companions().size(), 1u);
  EXPECT_EQ(ads[0]->companions()[0]->staticResourceURL(), "https://c.example/");
  EXPECT_EQ(ads[0]->companions()[0]->apiFramework(), "api");
}

struct SecondsCase {
  const char* behaviour;
  double start;
  double duration;
  std::vector<double> seconds;
};
class StreamInfoSeconds : public testing::TestWithParam<SecondsCase> {};
TEST_P(StreamInfoSeconds, LieWithinTheAdInOrder) {
  auto builder = StreamInfoBuilder::vod();
  builder.addBreak("b", GetParam().start).addAd("a", GetParam().duration);
  std::vector<double> seconds;
  for (const auto& event : builder.events()) seconds.push_back(event.time);
  EXPECT_EQ(seconds, GetParam().seconds);
}
INSTANTIATE_TEST_SUITE_P(
    , StreamInfoSeconds,
    testing::Values(SecondsCase{"WholeSeconds", 30, 10, {30, 32, 35, 37, 39}},
                    SecondsCase{"StartsInItsFirstWholeSecond", 30.5, 10, {31, 33, 35, 38, 40}},
                    SecondsCase{"ShorterThanASecond", 30.2, 0.5, {31, 31, 31, 31, 31}}),
    [](const auto& each) { return each.param.behaviour; });

TEST(StreamInfoBuilder, ABreakHoldsItsAdsInOrder) {
  auto builder = StreamInfoBuilder::vod();
  builder.addBreak("b", 30).addAd("a1", 10).addAd("a2", 15.5);
  const JSONValue document = JSONValue::parse(builder.build()).value;
  EXPECT_EQ(document["ads"]["a2"]["position"].integer(), 2);
  EXPECT_EQ(document["ads"]["a2"]["duration"].number(), 15.5);
  EXPECT_EQ(document["ads"]["a2"]["break"].text(), "b");
  EXPECT_EQ(document["breaks"]["b"].serialize(), R"({"ads":2,"duration":2.55E1})");
  EXPECT_EQ(document["cuepoints"].serialize(), R"([{"start":30,"end":5.55E1}])");
  EXPECT_EQ(document["times"]["40"].serialize(), R"([{"type":"start","ad":"a2"}])");
  EXPECT_FALSE(document.has("tags"));
}

TEST(StreamInfoBuilder, EveryLiveEventHasATextOfItsOwn) {
  auto builder = StreamInfoBuilder::live();
  builder.addBreak("b1", 5).addAd("a1", 8).addAd("a2", 0.5).addBreak("b2", 60).addAd("a3", 10);
  const JSONValue document = JSONValue::parse(builder.build()).value;
  std::set<std::string> texts;
  double earlier = 0;
  for (const auto& event : builder.events()) {
    EXPECT_EQ(document["tags"][event.text]["type"].text(), event.type);
    EXPECT_EQ(document["tags"][event.text]["ad"].text(), event.adKey);
    EXPECT_GT(event.time, earlier);
    earlier = event.time;
    texts.insert(event.text);
  }
  EXPECT_EQ(texts.size(), 15u);
}

TEST(StreamInitAnswerBuilder, LeavesOutWhatIsAbsent) {
  auto answer = StreamInitAnswerBuilder::live();
  answer.manifest.reset();
  answer.pollingFrequency = 2;
  answer.subtitles = {{.language = "en", .webvtt = "https://a.example/en.vtt"}};
  EXPECT_EQ(answer.build(),
            R"({"stream_id":"stream-1","stream_type":"live",)"
            R"("subtitles":[{"language":"en","webvtt":"https://a.example/en.vtt"}],)"
            R"("id3_events_url":"https://ads.example/live.json","polling_frequency":2})");
}

}  // namespace
}  // namespace xel::simulation
