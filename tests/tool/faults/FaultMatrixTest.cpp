#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tool/faults/FaultedSession.h"

namespace xel::serve {
namespace {

const std::vector any = {StreamKind::live, StreamKind::vod};
const std::vector live = {StreamKind::live};
const std::vector onDemand = {StreamKind::vod};

/// What is expected of the sessions with each of the faults, which are written as for `xel serve`
/// without the endpoint.
struct Row {
  std::vector<std::string> faults;
  std::vector<StreamKind> streams;
  Outcome outcome;
};

/// Every kind of fault, for one kind of request.
struct Table {
  std::string name;
  std::string endpoint;
  /// The start of its section in docs/faults.md.
  std::string heading;
  std::vector<Row> rows;
};
void PrintTo(const Table& table, std::ostream* out) { *out << table.name; }

const Outcome undisturbed = {"nothing", "the stream", "all", "accepted"};

Outcome noStream(const std::string& heard) { return {heard, "nothing", "none", "none"}; }
Outcome notRequested(const std::string& code, const std::string& when = "") {
  return noStream("`XELError` " + code + ": Unable to request stream (from `XELTransferError` " +
                  code + ")" + when);
}
Outcome notPlayed(const std::string& heard) {
  return {heard, "nothing: the player fails", "none", "none"};
}
Outcome unplayable(const std::string& code, const std::string& why) {
  return notPlayed("`XELClockPlayerError` " + code +
                   ": Unable to play https://…/streams/1/main.m3u8: " + why);
}
Outcome withoutAds(const std::string& seen) {
  return {"nothing", seen, "none, nor cue points", "none"};
}

const std::string late = "the stream, once the document has failed";
const std::string latest = "the stream, after 5 s";
const std::vector<std::string> failAtFirst = {"status:503@1",      "reset@1-2",    "truncate@1",
                                              "malformed@1",       "wrong-type@1", "oversized@1",
                                              "redirect-loop@1-17"};
const std::vector<std::string> failLater = {"hang@2-",       "slow-drip:1@2-", "status:503@2-",
                                            "reset@2-",      "truncate@2-",    "malformed@2-",
                                            "wrong-type@2-", "oversized@2-",   "redirect-loop@2-"};

const Table tables[] = {
    {"StreamRequest",
     "init",
     "The stream request",
     {{{"delay:0.05"}, any, undisturbed},
      {{"hang", "slow-drip:1"}, any, notRequested("3", ", after 5 s")},
      {{"reset", "truncate"}, any, notRequested("9")},
      {{"oversized"}, any, notRequested("7")},
      {{"redirect-loop"}, any, notRequested("11")},
      {{"status:503"},
       any,
       noStream("`XELHttpError` 503: Stream initialization failed: The fault init=status:503 "
                "struck.")},
      {{"malformed", "wrong-type"},
       any,
       noStream("`XELError` 1: Stream request failed with internal error (from `XELJSONError` "
                "1)")}}},
    {"FirstDocument",
     "document",
     "The first document",
     {{{"delay:0.05@1"}, any, undisturbed},
      {{"hang@1", "slow-drip:1@1"}, live, {"nothing", latest, "all", "accepted"}},
      {{"hang@1", "slow-drip:1@1"}, onDemand, withoutAds(latest)},
      {failAtFirst, live, {"nothing", late, "all", "accepted"}},
      {failAtFirst, onDemand, withoutAds(late)}}},
    {"Polls",
     "document",
     "Every later document",
     {{{"delay:0.05@2-"}, any, undisturbed},
      {failLater, live, {"nothing", "the stream", "3 of 6", "accepted"}},
      {failLater, onDemand, undisturbed}}},
    {"Manifest",
     "manifest",
     "The manifest",
     {{{"delay:0.05@1-3"}, any, undisturbed},
      {{"hang", "slow-drip:1"}, any, notPlayed("`XELTransferError` 3, after 60 s")},
      {{"reset", "truncate"}, any, notPlayed("`XELTransferError` 9")},
      {{"oversized"}, any, notPlayed("`XELTransferError` 7")},
      {{"redirect-loop"}, any, notPlayed("`XELTransferError` 11")},
      {{"status:503"}, any, unplayable("1", "HTTP status 503")},
      {{"malformed", "wrong-type"},
       any,
       unplayable("2", "not a media playlist, it does not begin with #EXTM3U")}}},
    {"Pings",
     "ping",
     "The pings",
     {{{"delay:0.05", "slow-drip", "malformed", "wrong-type", "oversized@3"}, any, undisturbed},
      {{"hang"}, any, {"nothing", "the stream", "all", "logged as failed, after 60 s"}},
      {{"status:500", "reset", "truncate", "redirect-loop"},
       any,
       {"nothing", "the stream", "all", "logged as failed"}}}},
};

std::string lineOf(const Outcome& outcome) {
  return outcome.heard + " | " + outcome.seen + " | " + outcome.adsNoticed + " | " + outcome.pings;
}

std::string textOf(const Table& table) {
  std::string text =
      "| Fault | Stream | The host hears | The viewer sees | Ads noticed | Pings |\n"
      "|---|---|---|---|---|---|\n";
  for (const auto& [faults, streams, outcome] : table.rows) {
    const auto* lead = "| `";
    for (const auto& fault : faults) {
      text += lead + fault.substr(0, fault.find('@')) + "`";
      lead = ", `";
    }
    text += streams == any ? " | any" : streams == live ? " | live" : " | on demand";
    text += " | " + lineOf(outcome) + " |\n";
  }
  return text;
}

constexpr const char* pageFile = XEL_TEST_DOCS "/faults.md";

std::string readPage() {
  std::ifstream in(pageFile);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string withTables(std::string page) {
  for (const auto& table : tables) {
    const auto begin = page.find("| Fault", page.find("\n## " + table.heading));
    if (begin == std::string::npos) return "there is no table for: " + table.heading;
    const auto end = std::min(page.find("\n\n", begin), page.size() - 1) + 1;
    page.replace(begin, end - begin, textOf(table));
  }
  return page;
}

class FaultMatrix : public testing::TestWithParam<Table> {
 protected:
  /// Writes the page anew if it is told the machine's name.
  static void TearDownTestSuite() {
    std::ostringstream text;
    text << std::setprecision(2) << "The longest of " << turns.turns
         << " functions on the main run loop took " << turns.longest * 1000 << " ms, and "
         << turns.waits << " of them waited for anything, such as a lock";
    std::cout << text.str() << "\n";
    const char* const machine = std::getenv("XEL_FAULTS_MACHINE");
    if (!machine || testing::UnitTest::GetInstance()->Failed()) return;
    const auto page = withTables(readPage());
    std::ofstream(pageFile) << std::regex_replace(page, std::regex("The longest of [^)]*"),
                                                  text.str() + "\n(" + machine);
  }
  static TurnCosts turns;
};
TurnCosts FaultMatrix::turns;

TEST_P(FaultMatrix, EachSessionGoesAsItShouldAndNoPingIsLost) {
  std::set<std::pair<StreamKind, Fault::Kind>> covered;
  for (const auto& row : GetParam().rows) {
    for (const auto& text : row.faults) {
      const auto fault = Fault::parse(GetParam().endpoint + "=" + text);
      for (const auto stream : row.streams) {
        SCOPED_TRACE(fault.text + (stream == StreamKind::live ? ", live" : ", on demand"));
        const auto report = playWithFault(stream, fault);
        EXPECT_EQ(lineOf(report.outcome), lineOf(row.outcome));
        EXPECT_EQ(report.unaccounted, std::vector<std::string>());
        EXPECT_EQ(report.waitedFor, 0);
        const bool isPollOnDemand = GetParam().name == "Polls" && stream == StreamKind::vod;
        EXPECT_EQ(report.struck == 0, isPollOnDemand);
        turns.add(report.turns);
        covered.emplace(stream, fault.kind);
      }
    }
  }
  EXPECT_EQ(covered.size(), 20u);
}

INSTANTIATE_TEST_SUITE_P(, FaultMatrix, testing::ValuesIn(tables),
                         [](const auto& table) { return table.param.name; });

TEST(FaultPage, HasTheTables) {
  EXPECT_EQ(readPage(), withTables(readPage())) << "script/fault-page writes them";
}

}  // namespace
}  // namespace xel::serve
