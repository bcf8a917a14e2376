#include <gtest/gtest.h>

#include "xel/model/XELAd.h"
#include "xel/model/XELCuepoint.h"

namespace {

using Texts = std::vector<std::string>;

TEST(XELAd, FilesURLsInOrderUnderTheExactEvent) {
  const auto ad = XELAd::initPrivate();
  EXPECT_TRUE(ad->trackingURLs().empty());
  for (const char* url : {"a", "b", "a"}) ad->addEvent_trackingURL("start", url);
  ad->addEvent_trackingURL("complete", "c");
  const auto snapshot = ad->trackingURLs();
  ad->addEvent_trackingURL("complete", "d");
  EXPECT_EQ(ad->trackingURLsForEvent("start"), (Texts{"a", "b", "a"}));
  EXPECT_EQ(ad->trackingURLsForEvent("complete"), (Texts{"c", "d"}));
  EXPECT_EQ(ad->trackingURLsForEvent("Start"), std::nullopt);
  EXPECT_EQ(snapshot.at("complete"), Texts{"c"});
}

TEST(XELCuepoint, IsEqualOnlyWithTheSameSpanAndFlag) {
  const auto make = XELCuepoint::initWithStartTime_endTime;
  const auto cuepoint = make(10, 40);
  EXPECT_TRUE(cuepoint->isEqual(*make(10, 40)));
  EXPECT_FALSE(cuepoint->isEqual(*make(10, 40.000000001)));
  EXPECT_FALSE(cuepoint->isEqual(*make(9, 40)));
  cuepoint->setPlayed(true);
  EXPECT_FALSE(cuepoint->isEqual(*make(10, 40)));
  EXPECT_TRUE(cuepoint->isEqual(*cuepoint));
}

TEST(XELCuepoint, DescriptionIsExactText) {
  const auto cuepoint = XELCuepoint::initWithStartTime_endTime(40, -10.00000049);
  EXPECT_EQ(cuepoint->description(), "Start: 40.000000, End: -10.000000, Played: No");
  const auto extreme = XELCuepoint::initWithStartTime_endTime(-1.7976931348623157e308, 30.5);
  extreme->setPlayed(true);
  EXPECT_EQ(extreme->description().substr(0, 25), "Start: -17976931348623157");
  EXPECT_TRUE(extreme->description().ends_with(".000000, End: 30.500000, Played: Yes"));
}

}  // namespace
