#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "EventText.h"
#include "JSONLines.h"
#include "ProgressBar.h"

namespace xel {
namespace {

std::shared_ptr<XELAd> makeAd() {
  auto ad = XELAd::initPrivate();
  ad->setAdKey("k");
  ad->setAdTitle("Caf\xC3\xA9 \"1\"\n2");
  ad->setDuration(15.5);
  ad->setAdPosition(2);
  ad->setAdStartTime(12.2);
  ad->setAdBreakInfo(
      XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset("b", 3, 30, 0, 10));
  const auto other = XELCreative::init();
  const auto linear = XELCreative::init();
  linear->setIsLinear(true);
  linear->setAdID("c1");
  linear->setSequence(1);
  linear->addEvent_trackingURL("start", "https://t.example/1");
  linear->addEvent_trackingURL("start", "https://t.example/2");
  ad->addCreatives({other, linear});
  ad->setSelectedCreative(linear);
  const auto companion = XELCompanion::initPrivate();
  companion->setWidth(300);
  companion->setHeight(250);
  ad->addCompanions({companion});
  return ad;
}

constexpr auto adJSON =
    R"({"adKey":"k","adID":null,"adTitle":"Café \"1\"\n2","adSystem":null,"adDescription":null,)"
    R"("duration":15.5,"adPosition":2,"adStartTime":12.2,"adBreakInfo":{"adBreakKey":"b",)"
    R"("totalAds":3,"duration":30,"adBreakIndex":0,"timeOffset":10},"creatives":[)"
    R"({"isLinear":false,"adID":null,"universalAdIdValue":null,"universalAdIdRegistry":null,)"
    R"("sequence":0,"trackingURLs":{}},{"isLinear":true,"adID":"c1","universalAdIdValue":null,)"
    R"("universalAdIdRegistry":null,"sequence":1,"trackingURLs":)"
    R"({"start":["https://t.example/1","https://t.example/2"]}}],"companions":[)"
    R"({"staticResourceURL":null,"apiFramework":null,"width":300,"height":250,)"
    R"("trackingURLs":{}}],"trackingURLs":{},"selectedCreative":1})";

struct EventCase {
  const char* name;
  double time;
  PlayEvent event;
  std::string json;
  std::string text;
};

std::vector<EventCase> eventCases() {
  const auto cuepoint = XELCuepoint::initWithStartTime_endTime(10, 40.5);
  cuepoint->setPlayed(true);
  const auto inner = std::make_shared<const Error>(Error{"XELTransferError", 3, "Timed\nout", {}});
  const auto outer = std::make_shared<const Error>(Error{"XELError", 3, "Unable \x1B[2J", inner});
  const auto notANumber = std::numeric_limits<double>::quiet_NaN();
  return {
      {"Stream", 0, StreamInitialized{"id\xFF"},
       R"({"t":0,"event":"didInitializeStream","streamID":"id)"
       "\xEF\xBF\xBD"
       R"("})",
       "0:00.0    stream              id?"},
      {"Load", 0,
       StreamLoaded{"https://h",
                    JSONValue::parse(R"([{"language":"de","n":[1,2.5,true]}])").value.elements()},
       R"({"t":0,"event":"loadURL","url":"https://h","subtitles":[{"language":"de","n":[1,2.5,true]}]})",
       "0:00.0    loading             https://h"},
      {"Ready", 0.1 + 0.2, ReadyForPlayback{},
       R"({"t":0.30000000000000004,"event":"streamManagerIsReadyForPlayback"})", "0:00.3    ready"},
      {"Ad", 12.2, AdEvent{"adDidStart", makeAd()},
       std::string(R"({"t":12.2,"event":"adDidStart","ad":)") + adJSON + "}",
       "0:12.2    ad started          2/3 \"Caf\xC3\xA9 \"1\" 2\", 15.5 s"},
      {"Countdown", 1e22, AdCountdown{makeAd(), -0.5},
       std::string(R"({"t":1e+22,"event":"didCountdownTo","ad":)") + adJSON +
           R"(,"remaining":-0.5})",
       ""},
      {"BreakWithoutCount", 75.25,
       BreakEvent{"adBreakDidStart",
                  XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset(
                      "", -1, notANumber, -1, 0)},
       R"({"t":75.25,"event":"adBreakDidStart","adBreakInfo":{"adBreakKey":"","totalAds":-1,)"
       R"("duration":null,"adBreakIndex":-1,"timeOffset":0}})",
       "1:15.3    ad break started    ? ads, nan s"},
      {"Cuepoints", 0, CuepointsUpdated{{cuepoint}},
       R"({"t":0,"event":"didUpdateCuepoints","cuepoints":[{"startTime":10,"endTime":40.5,"isPlayed":true}]})",
       "0:00.0    cue points          0:10.0 to 0:40.5 (played)"},
      {"Error", 0, ErrorReceived{outer},
       R"({"t":0,"event":"didReceiveError","error":{"domain":"XELError","code":3,)"
       R"("description":"Unable \u001b[2J","underlying":{"domain":"XELTransferError","code":3,)"
       R"("description":"Timed\nout","underlying":null}}})",
       "0:00.0    error               Unable ?[2J (XELError 3): Timed out (XELTransferError 3)"},
      {"NoError", 0, ErrorReceived{nullptr}, R"({"t":0,"event":"didReceiveError","error":null})",
       "0:00.0    error               the display gave no reason"},
      {"Ping", 3, PingSent{"start", "no URL"},
       R"({"t":3,"event":"ping","pingEvent":"start","url":"no URL"})",
       "0:03.0    ping start          no URL"},
      {"PingStatus", 3, PingAnswered{"start", "https://t", nullptr, 204, 1.25},
       R"({"t":3,"event":"pingResult","pingEvent":"start","url":"https://t","status":204,"ms":1.25})",
       "0:03.0    ping answered       start in 1 ms: 204, https://t"},
      {"PingError", 3, PingAnswered{"start", "https://t", inner, 0, 0},
       R"({"t":3,"event":"pingResult","pingEvent":"start","url":"https://t","error":)"
       R"({"domain":"XELTransferError","code":3,"description":"Timed\nout","underlying":null},"ms":0})",
       "0:03.0    ping answered       start in 0 ms: Timed out (XELTransferError 3), https://t"},
      {"Conversion", 0, TimeConverted{30, 25, 60, nullptr},
       R"({"t":0,"event":"conversion","time":30,"contentTime":25,"streamTime":60,"previousCuepoint":null})",
       "0:00.0    conversion          stream time 0:30.0 is content time 0:25.0; content time "
       "0:30.0 is stream time 1:00.0; previous cue point: none"},
  };
}

TEST(EventOutput, IsJSONForProgramsAndALineForPeople) {
  for (const auto& [name, time, event, json, text] : eventCases()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(toJSON(time, event), json);
    EXPECT_EQ(toLine(time, event).value_or(""), text);
  }
}

TEST(EventText, ReplacesWhatATerminalWouldObey) {
  EXPECT_EQ(printable("a\x07"
                      "b\x7F"
                      "c\xC2\x9B"
                      "d\tz\xE2\x82\xAC"),
            "a?b?c?d z\xE2\x82\xAC");
  EXPECT_EQ(printable("\xC0\x80\xED\xA0\x80\xF0\x9F\x98"), "????????");
}

std::string drawn(double position, double end, const std::vector<TimeSpan>& breaks) {
  std::string text;
  for (const auto cell : barCells(position, end, breaks, 10)) {
    text += "-=o#"[static_cast<int>(cell)];
  }
  return text;
}

TEST(ProgressBar, MarksBreaksAndWhatWasPlayed) {
  const auto infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(drawn(0, 100, {}), "----------");
  EXPECT_EQ(drawn(55, 100, {{20, 30}, {60, 80}}), "==#==-oo--");
  EXPECT_EQ(drawn(65, 100, {{60, 80}}), "======oo--");
  EXPECT_EQ(drawn(100, 100, {{0, 0.1}}), "#=========");
  EXPECT_EQ(drawn(0, 100, {{99.9, 100}}), "---------o") << "a short break shows";
  EXPECT_EQ(drawn(500, 100, {{95, 130}, {100, 110}, {50, 40}}), "=========#");
  EXPECT_EQ(drawn(10, 0, {{0, 1}}), "----------") << "an end that is not known";
  EXPECT_EQ(drawn(std::nan(""), 100, {{std::nan(""), 20}, {10, infinity}}), "-ooooooooo");
}

}  // namespace
}  // namespace xel
