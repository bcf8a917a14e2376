#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

#include <gtest/gtest.h>

#include "common/TemporaryFolder.h"
#include "simulate/Simulation.h"
#include "simulate/SimulationOutput.h"
#include "simulate/SimulationScript.h"
#include "simulate/TextSchedule.h"

namespace xel::simulate {
namespace {

/// One break at 30 s with ads of 10 and 20 s.
simulation::StreamInfoBuilder twoAds(simulation::StreamInfoBuilder document) {
  document.addBreak("b", 30).addAd("one", 10).addAd("two", 20);
  return document;
}

/// "UNDER TYPE AD" of each event that has not fired, to the reason.
using Missed = std::map<std::string, std::string>;

Missed missed(const Simulation& simulation) {
  Missed missed;
  for (const auto& event : simulation.documentEvents().all()) {
    if (event.hasFired) continue;
    missed[event.under + ' ' + event.type + ' ' + event.adKey] = event.reason;
    EXPECT_FALSE(event.explanation.empty());
  }
  return missed;
}

struct NullOutput final : SimulationView {
  bool wantsCountdowns() const override { return true; }
  void show(double, double, const PlayEvent&) override {}
  void remark(double, double, const std::string&, const std::string&) override {}
};

struct VODCase {
  const char* behaviour;
  const char* play;
  Missed missed;
  std::string from = {};
  std::string to = {};
};

void PrintTo(const VODCase& tested, std::ostream* out) { *out << tested.behaviour; }

class SimulatedVOD : public testing::TestWithParam<VODCase> {};

TEST_P(SimulatedVOD, SaysWhyEventsDoNotFire) {
  auto document = twoAds(simulation::StreamInfoBuilder::vod()).build();
  if (const auto& from = GetParam().from; !from.empty()) {
    const auto place = document.find(from);
    ASSERT_NE(place, std::string::npos);
    document.replace(place, from.size(), GetParam().to);
  }
  NullOutput output;
  Simulation simulation(document, {}, output);
  simulation.run(stepsOfPlay(GetParam().play));
  EXPECT_EQ(missed(simulation), GetParam().missed);
}

INSTANTIATE_TEST_SUITE_P(
    , SimulatedVOD,
    testing::Values(
        VODCase{"AllFire", "0:70", {}},
        VODCase{"ASeekJumpsOverSeconds",
                "0:70,34:41",
                {{"35 midpoint one", "jumped-over"},
                 {"37 thirdquartile one", "jumped-over"},
                 {"39 complete one", "jumped-over"},
                 {"40 start two", "jumped-over"},
                 {"45 firstquartile two", "not-started"},
                 {"50 midpoint two", "not-started"},
                 {"55 thirdquartile two", "not-started"},
                 {"59 complete two", "not-started"}}},
        VODCase{"WhatIsSeenLaterFires", "0:70,29:36,37:29", {}},
        VODCase{"PlaybackEndsBefore", "0:56", {{"59 complete two", "not-reached"}}},
        VODCase{"AnAdStartsOnce",
                "0:70",
                {{"39 start one", "already-started"}},
                R"("39":[{)",
                R"("39":[{"type":"START","ad":"one"},{)"},
        VODCase{
            "NamesThatNobodyKnows",
            "0:70",
            {{"39 pause one", "unknown-event"},
             {"29 start x", "unknown-ad"},
             {"39 midpoint ", "no-ad"},
             {"039 start one", "no-second"}},
            R"("39":[)",
            R"("29":[{"type":"start","ad":"x"}],"039":[{"type":"start","ad":"one"}],"39":[{"type":"pause","ad":"one"},)"
            R"({"type":"midpoint"},)"}),
    [](const auto& info) { return info.param.behaviour; });

TEST(SimulatedVODStream, EndsAnOverrunningBreakBeforeItsComplete) {
  auto document = simulation::StreamInfoBuilder::vod();
  document.addBreak("b", 30).addAd("one", 10);
  auto text = document.build();
  const std::string complete = R"("39":)";
  text.replace(text.find(complete), complete.size(), R"("45":)");
  NullOutput output;
  Simulation simulation(text, {}, output);
  simulation.run(stepsOfPlay("0:50"));
  EXPECT_EQ(missed(simulation), (Missed{{"45 complete one", "overrun"}}));
}

TEST(SimulatedLiveStream, TakesEachDocumentAsTheLibraryDoes) {
  const std::string ads =
      R"({"breaks":{"b":{"ads":2,"duration":30}},"ads":{"a":{"break":"b","duration":10}},)";
  const TemporaryFolder folder;
  const auto write = [&folder](const char* name, const std::string& text) {
    std::ofstream(folder.path() / name) << text;
    return (folder.path() / name).string();
  };
  auto whole = simulation::StreamInfoBuilder::live();
  whole.addBreak("b", 10).addAd("a", 10).addAd("c", 20);
  auto text = whole.build();
  const auto startOfC = whole.events()[5].text;
  write("next.json", text);
  const auto script = write("script",
                            "document after 0\nplay 1\ntext S\ndocument is next.json\nplay 10\n"
                            "text " +
                                whole.events()[0].text + "\ntext " + startOfC + "\nplay 5\n");
  const std::string first = ads + R"("tags":{"S":{"type":"start","ad":"a"},")" + startOfC +
                            R"(":{"type":"start","ad":"a"}}})";
  NullOutput output;
  Simulation simulation(first, {.isLive = true}, output);
  simulation.run(stepsOfScript(script, first));
  const auto notFired = missed(simulation);
  EXPECT_EQ(notFired.at("S start a"), "no-vast");
  EXPECT_EQ(notFired.at(whole.events()[0].text + " start a"), "already-started");
  EXPECT_EQ(notFired.at(startOfC + " start a"), "not-reached") << "the next document had another";
  EXPECT_FALSE(notFired.contains(startOfC + " start c"));
}

TEST(SimulatedLiveStream, PlaysItsTextsAndSaysWhichCameBeforeTheirDocument) {
  const auto document = twoAds(simulation::StreamInfoBuilder::live());
  NullOutput output;
  SimulationSettings settings{.isLive = true};
  settings.texts = scheduleTexts(StreamDocument::read(JSONValue::parse(document.build()).value));
  ASSERT_EQ(settings.texts.size(), 10u);
  Simulation whole(document.build(), settings, output);
  whole.run(stepsOfPlay("0:60"));
  EXPECT_EQ(missed(whole), Missed());

  // Without a first document; the second poll brings it after the first ad has started.
  const TemporaryFolder folder;
  const auto file = (folder.path() / "script").string();
  std::ofstream(file) << "# late\ndocument fails\nplay 5\ndocument answers\n  tick 0.5\nplay to 6\n"
                      << "text " << document.events()[0].text << "\ntext nobody's\npause 5\n"
                      << "text " << document.events()[5].text
                      << "\nseek 3\ndocument hangs\nplay 1\n";
  Simulation late(document.build(), {.isLive = true}, output);
  late.run(stepsOfScript(file, document.build()));
  const auto notFired = missed(late);
  EXPECT_EQ(notFired.size(), 9u);
  EXPECT_EQ(std::count_if(notFired.begin(), notFired.end(),
                          [](const auto& event) { return event.second == "before-document"; }),
            1);
  EXPECT_EQ(late.documentEvents().unknownTexts(), std::vector<std::string>{"nobody's"});
}

TEST(SimulationScript, NamesTheLineThatItCannotRead) {
  const TemporaryFolder folder;
  const auto file = (folder.path() / "script").string();
  for (const char* line : {"wind 3", "play", "play -1", "tick 0", "document is none.json",
                           "document status 99", "document", "seek to 3", "pause x"}) {
    std::ofstream(file) << "play 1\n" << line << '\n';
    try {
      stepsOfScript(file, "{}");
      ADD_FAILURE() << line << " was read";
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(file + ":2: "), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace xel::simulate
