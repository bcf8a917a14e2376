#include <algorithm>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "xel/simulation/simulation.h"

#include "common/TemporaryFolder.h"
#include "inspect/InspectCommand.h"
#include "inspect/Inspection.h"
#include "inspect/VastOutline.h"

namespace xel::inspect {
namespace {

struct Ran {
  int exitStatus = -1;
  std::string out;
  std::string err;
};

/// `xel inspect` with a file that has this text.
Ran runOn(const std::string& text, std::vector<std::string> options = {}) {
  const TemporaryFolder folder;
  const auto file = folder.path() / "document";
  std::ofstream(file, std::ios::binary) << text;
  options.push_back(file.string());
  CLI::App app;
  Ran ran;
  registerInspect(app, ran.exitStatus);
  options.insert(options.begin(), "inspect");
  std::reverse(options.begin(), options.end());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  app.parse(options);
  ran.out = testing::internal::GetCapturedStdout();
  ran.err = testing::internal::GetCapturedStderr();
  return ran;
}

std::string breakOfOneAd(const std::string& vast) {
  return simulation::StreamInfoBuilder::vod()
      .addBreak("break-1", 30)
      .addAd("ad-1", 10, vast)
      .build();
}

TEST(InspectCommand, LeavesAStatusForScripts) {
  const std::string imp = "<Impression>https://h/i</Impression><Creatives><Creative>";
  const std::string good =
      "<VAST><Ad><InLine>" + imp + "<Linear/></Creative></Creatives></InLine></Ad></VAST>";
  const std::string warning = "<VAST><Ad/></VAST>";
  EXPECT_EQ(runOn(good, {"--strict"}).exitStatus, 0);
  EXPECT_EQ(runOn(warning).exitStatus, 0);
  EXPECT_EQ(runOn(warning, {"--strict"}).exitStatus, 1);
  EXPECT_EQ(runOn("<VAST/>").exitStatus, 1);
  for (const auto* text : {"", " \n", "hello", "[]", "{}", "{\"ads\":", "<html/>",
                           "{\"trace\":\"xel\"}", "{\"trace\":\"xel\",\"version\":99}\n"}) {
    const auto ran = runOn(text);
    EXPECT_EQ(ran.exitStatus, 2) << text;
    EXPECT_EQ(ran.out, "");
    EXPECT_TRUE(ran.err.starts_with("xel inspect: ")) << ran.err;
  }
  EXPECT_EQ(runOn(good, {"/nowhere"}).exitStatus, 2) << "the other file was inspected";
}

TEST(InspectCommand, ShowsAStreamForPeople) {
  const auto vast =
      "<VAST><Ad id=\"v1\"><InLine><AdTitle>Salt</AdTitle><Error>https://h/e</Error>"
      "<Impression> <![CDATA[https://adserving.example/pagead/adview?ai=1&sigh=2]]></Impression>"
      "<Creatives>"
      "<Creative id=\"c1\" sequence=\"2\"><Linear><Tracking event=\"midpoint\">"
      "https://h/m?v=[SDKV]</Tracking></Linear></Creative></Creatives></InLine></Ad></VAST>";
  auto out = runOn(breakOfOneAd(vast), {"--app-id", "com.example.tv"}).out;
  const auto version = *makeLinuxEnvironment({})->libraryVersion();
  for (auto at = out.find(version); at != std::string::npos; at = out.find(version)) {
    out.replace(at, version.size(), "VERSION");
  }
  EXPECT_EQ(out, R"(This is a stream info document, on demand.

Time line
  0:30.0    break "break-1", 10 s, 1 ad
  0:30.0      ad "ad-1", 10 s, position 1

Cue points
  0:30.0 to 0:40.0

Ad "ad-1"
  position       1 of 1 in break "break-1" of 10 s
  duration       10 s
  starts at      0:30.0, break index 0, offset 0:30.0
  id             v1
  title          Salt
  creatives      * c1, linear, sequence 2, universal ad id none (selected)
  on start at 0:30.0
    (white space)
      refused: The URL is not valid: a character stands where none may, or must be escaped.
    https://adserving.example/pagead/adview?ai=1&sdkv=t.VERSION/com.example.tv&sigh=2&ssss=oxel
  on firstquartile at 0:32.0: no pings
  on midpoint at 0:35.0
    https://h/m?v=t.VERSION
  on thirdquartile at 0:37.0: no pings
  on complete at 0:39.0: no pings
  never sent     error (1)

Findings
  $.ads["ad-1"].vast
    1:50  note     tracking-never-sent
      The ad has tracking that the client never sends: error (1).
      Remedy: Nothing, or send them from the host application.
    1:76  warning  ping-white-space
      Impression files 1 ping of white space for start, which fails.
      Remedy: Write the element on one line: <Impression><![CDATA[URL]]></Impression>.

0 errors, 1 warning, 1 note
)");
}

TEST(InspectCommand, ShowsAnAnswerForPrograms) {
  auto answer = simulation::StreamInitAnswerBuilder::live();
  answer.manifest = "https://media.example/main.m3u8?a=1&b=2";
  answer.prerollManifest = "https://media.example/preroll.m3u8";
  answer.pollingFrequency = 2.5;
  const auto ran = runOn(answer.build(), {"--json", "--manifest-suffix", "b=3"});
  const auto json = JSONValue::parse(ran.out).value;
  EXPECT_EQ(json["kind"].text(), "answer");
  EXPECT_EQ(json["errors"].integer(), 0);
  const auto shown = json["answer"];
  EXPECT_EQ(shown["streamID"].text(), "stream-1");
  EXPECT_EQ(shown["documentURL"].text(), "https://ads.example/live.json");
  EXPECT_EQ(shown["pollingPeriod"].number(), 2.5);
  const auto loads = shown["loads"].elements();
  ASSERT_EQ(loads.size(), 2U);
  EXPECT_EQ(loads[0]["url"].text(), "https://media.example/preroll.m3u8");
  EXPECT_EQ(loads[1]["url"].text(), "https://media.example/main.m3u8?a=1&b=3");
}

TEST(InspectCommand, InspectsTheDocumentsOfATrace) {
  const std::string document =
      R"({\"ads\":{\"ad-1\":{\"vast\":\"<VAST><Ad><Impression>)"
      R"(https://ads.test/pcs/view?xai=1&amp;sig=2</Impression></Ad></VAST>\"}}})";
  const std::string result =
      R"({"t":1,"kind":"httpResult","id":2,"status":200,"headers":[],"ms":3,)"
      R"("body":")" +
      document + "\"}\n";
  const auto trace =
      R"({"trace":"xel","version":1,"services":{"measurementDomains":["ads.test",""]},)"
      R"("environment":{"libraryVersion":"9.9","applicationIdentifier":"com.example.tv"}})"
      "\n"
      R"({"t":0.5,"kind":"httpRequest","id":2,"method":"GET","url":"https://h/info","headers":[]})"
      "\n" +
      result + result + R"({"t":2,"kind":"httpRes)";
  const auto json = JSONValue::parse(runOn(trace, {"--json"}).out).value;
  const auto documents = json["documents"].elements();
  ASSERT_EQ(documents.size(), 1U);
  EXPECT_EQ(documents[0]["line"].integer(), 3);
  EXPECT_EQ(documents[0]["times"].integer(), 2);
  EXPECT_EQ(documents[0]["url"].text(), "https://h/info");
  EXPECT_GT(json["errors"].integer(), 0);
}

/// What the own reading of VAST takes for pings must be what the library sends.
TEST(VastOutline, FilesThePingsThatTheLibrarySends) {
  const std::string cases[] = {
      "<Impression>a&amp;b<!-- c -->d<![CDATA[e]]>\n<x>f</x>g</Impression>",
      "<Impression/><Impression> </Impression><Impression><![CDATA[]]></Impression>",
      "<Tracking event=\"Start\">\xC3\xA9t\xC3\xA9 \r\n z</Tracking><Tracking>none</Tracking>",
      "<Extensions><Tracking event=\"complete\">e</Tracking></Extensions>",
      "<Creatives><Impression>lost</Impression><Creative><Linear><Impression>i</Impression>"
      "<Tracking event=\"creativeView\">v</Tracking></Linear><Tracking event=\"start\">lost"
      "</Tracking></Creative><Creative><Linear><Tracking event=\"start\">second</Tracking>"
      "</Linear></Creative></Creatives><Impression>last</Impression>",
      "<Creatives><Creative><CompanionAds><Linear><Tracking event=\"start\">no</Tracking></Linear>"
      "</CompanionAds></Creative></Creatives><Impression>&#104;&lt;</Impression>",
  };
  for (const auto& inside : cases) {
    const auto vast = "<VAST><Ad>" + inside + "</Ad><Ad><Impression>x</Impression></Ad></VAST>";
    std::vector<std::pair<std::string, std::string>> filed, sent;
    const VastOutline outline(vast);
    const auto view = inspect(vast).view;
    for (const auto* event :
         {"start", "creativeview", "firstquartile", "midpoint", "thirdquartile", "complete"}) {
      for (const auto& url : outline.pingsOf(event)) filed.emplace_back(event, url.piece->text);
    }
    for (const auto& ping : view.ads.at(0).pings) sent.emplace_back(ping.event, ping.url);
    EXPECT_EQ(filed, sent) << inside;
    EXPECT_FALSE(sent.empty()) << inside;
  }
}

}  // namespace
}  // namespace xel::inspect
