#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "common/PrintableText.h"
#include "play/EventText.h"
#include "play/JSONLines.h"
#include "play/ProgressBar.h"

namespace xel {
namespace {

std::shared_ptr<const Error> makeError() {
  const auto cause = std::make_shared<const Error>(Error{"XELTransferError", 3, "Timed\nout", {}});
  return std::make_shared<const Error>(Error{"XELError", 3, "Unable \x1B[2J", cause});
}

TEST(EventOutput, TellsOfAnAd) {
  const auto ad = XELAd::initPrivate();
  ad->setAdTitle("Café \"1\"\n2");
  ad->setDuration(15.5);
  ad->setAdPosition(2);
  ad->setAdBreakInfo(
      XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset("b", 3, NAN, 0, 10));
  ad->addCreatives({XELCreative::init(), XELCreative::init()});
  ad->setSelectedCreative(ad->creatives()[1]);
  const AdEvent event{"adDidStart", ad};
  EXPECT_EQ(toLine(75.25, event), "1:15.3    ad started          2/3 \"Café \"1\" 2\", 15.5 s");
  const JSONValue written = JSONValue::parse(toJSON(75.25, event)).value["ad"];
  EXPECT_EQ(written["adTitle"].text(), ad->adTitle());
  EXPECT_TRUE(written["adBreakInfo"].has("duration")) << "as null, being not a number";
  EXPECT_EQ(written["selectedCreative"].integer(), 1);
}

TEST(EventOutput, IsJSONThatProgramsCanRead) {
  const auto cuepoint = XELCuepoint::initWithStartTime_endTime(1e22, 40.5);
  const auto subtitles = JSONValue::parse(R"([{"language":"de","n":[1,2.5,true]}])").value;
  const std::pair<PlayEvent, std::string> cases[] = {
      {StreamInitialized{"id\xFF"}, R"("event":"didInitializeStream","streamID":"id�")"},
      {StreamLoaded{"https://h", subtitles.elements()},
       R"("event":"loadURL","url":"https://h","subtitles":[{"language":"de","n":[1,2.5,true]}])"},
      {ErrorReceived{makeError()},
       R"("event":"didReceiveError","error":{"domain":"XELError","code":3,)"
       R"("description":"Unable \u001b[2J","underlying":{"domain":"XELTransferError","code":3,)"
       R"("description":"Timed\nout","underlying":null}})"},
      {PingAnswered{"start", "https://t", nullptr, 204, 1.25},
       R"("event":"pingResult","pingEvent":"start","url":"https://t","status":204,"ms":1.25)"},
      {TimeConverted{30, 25, 60, cuepoint},
       R"("event":"conversion","time":30,"contentTime":25,"streamTime":60,"previousCuepoint":)"
       R"({"startTime":1e+22,"endTime":40.5,"isPlayed":false})"},
  };
  for (const auto& [event, json] : cases) {
    EXPECT_EQ(toJSON(0.1 + 0.2, event), R"({"t":0.30000000000000004,)" + json + "}");
  }
}

TEST(EventText, ReplacesWhatATerminalWouldObey) {
  EXPECT_EQ(toLine(0, ErrorReceived{makeError()})->substr(30),
            "Unable ?[2J (XELError 3): Timed out (XELTransferError 3)");
  EXPECT_EQ(printable("a\a\x7F\xC2\x9B\tz€"), "a??? z€");
  EXPECT_EQ(printable("\xC0\x80\xED\xA0\x80\xF0\x9F\x98"), "????????");
}

TEST(ProgressBar, MarksBreaksAndWhatWasPlayed) {
  const auto drawn = [](double position, double end, const std::vector<TimeSpan>& breaks) {
    std::string text;
    for (const auto cell : barCells(position, end, breaks, 10)) {
      text += "-=o#"[static_cast<int>(cell)];
    }
    return text;
  };
  EXPECT_EQ(drawn(55, 100, {{20, 30}, {60, 80}}), "==#==-oo--");
  EXPECT_EQ(drawn(0, 100, {{99.9, 100}}), "---------o") << "a short break shows";
  EXPECT_EQ(drawn(500, 100, {{95, 130}, {100, 110}, {50, 40}}), "=========#");
  EXPECT_EQ(drawn(10, 0, {{0, 1}}), "----------") << "an end that is not known";
  EXPECT_EQ(drawn(NAN, 100, {{NAN, 20}, {10, HUGE_VAL}}), "-ooooooooo");
}

}  // namespace
}  // namespace xel
