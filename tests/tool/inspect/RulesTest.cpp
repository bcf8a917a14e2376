#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xel/simulation/simulation.h"

#include "inspect/Inspection.h"

namespace xel::inspect {
namespace {

std::string replaceAll(std::string text, const std::string& part, const std::string& by) {
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + by.size())) {
    text.replace(at, part.size(), by);
  }
  return text;
}

/// What an example of docs/rules.md stands for: the document itself, or one around the inside of
/// an ad.
std::string documentOf(const std::string& example) {
  std::string attributes;
  for (int i = 3; i < 300; ++i) attributes += "a" + std::to_string(i) + "=\"\" ";
  auto text = replaceAll(replaceAll(example, "\\xE9", "\xE9"), "…", attributes);
  const auto first = text.substr(text.find_first_not_of(" \n"));
  const auto begins = [&](const char* with) { return first.starts_with(with); };
  if (begins("{") || begins("<VAST") || begins("<Response")) return text;
  if (begins("<Ad>") || begins("<Ad ")) return "<VAST>" + text + "</VAST>";
  return "<VAST><Ad><InLine>" + text + "</InLine></Ad></VAST>";
}

/// The lines of an example that are common, or are marked.
std::string linesOf(const std::string& example, char mark) {
  std::string lines;
  for (std::size_t begin = 0; begin < example.size();) {
    const auto end = example.find('\n', begin);
    const auto line = example.substr(begin, end - begin);
    if (!line.empty() && (line[0] == ' ' || line[0] == mark)) lines += line.substr(1) + '\n';
    begin = end + 1;
  }
  return lines;
}

std::vector<std::string> rulesFoundIn(const std::string& document) {
  std::vector<std::string> rules;
  for (const auto& finding : inspect(document).findings) rules.emplace_back(finding.rule);
  return rules;
}

/// The parts of docs/rules.md from one "### " to the next.
std::vector<std::string> sectionsOfTheDocumentation() {
  std::ifstream in(XEL_TEST_DOCS "/rules.md");
  const std::string text{std::istreambuf_iterator<char>(in), {}};
  std::vector<std::string> sections;
  for (auto at = text.find("\n### "); at != std::string::npos;) {
    const auto next = text.find("\n### ", at + 1);
    sections.push_back(text.substr(at + 1, next - at - 1));
    at = next;
  }
  return sections;
}

TEST(Rules, AreDocumentedWithAnExampleThatBreaksThemAndOneThatDoesNot) {
  const auto sections = sectionsOfTheDocumentation();
  ASSERT_EQ(sections.size(), ruleTable.size());
  for (std::size_t i = 0; i < ruleTable.size(); ++i) {
    const auto& rule = ruleTable[i];
    const std::string id(rule.id);
    SCOPED_TRACE(id);
    auto severity = std::string(severityName(rule.severity));
    severity[0] = static_cast<char>(std::toupper(severity[0]));
    const auto& section = sections[i];
    EXPECT_TRUE(section.starts_with("### " + id + "\n\n*" + severity +
                                    "*: " + std::string(rule.summary) + "\n"));
    EXPECT_NE(section.find("```\n\n" + std::string(rule.remedy) + "\n"), std::string::npos);
    const std::string fence = "```diff\n";
    const auto begin = section.find(fence) + fence.size();
    const auto example = section.substr(begin, section.find("```", begin) - begin);
    const auto broken = rulesFoundIn(documentOf(linesOf(example, '-')));
    const auto mended = rulesFoundIn(documentOf(linesOf(example, '+')));
    EXPECT_EQ(std::count(broken.begin(), broken.end(), id), 1);
    EXPECT_EQ(std::count(mended.begin(), mended.end(), id), 0);
  }
}

TEST(Rules, FindNothingInGoodDocuments) {
  using namespace simulation;
  auto vod = StreamInfoBuilder::vod();
  auto live = StreamInfoBuilder::live();
  for (auto* document : {&vod, &live}) {
    document->addBreak("break-1", 30).addAd("ad-1", 10).addAd("ad-2", 15.5).addAd("ad-3", 20);
    document->addBreak("break-2", 120).addAd("ad-4", 30);
  }
  auto withPreroll = StreamInitAnswerBuilder::live();
  withPreroll.prerollManifest = "https://media.example/preroll.m3u8";
  withPreroll.pollingFrequency = 2.5;
  withPreroll.subtitles = {{"en", "https://media.example/en.vtt"}};
  for (const auto& text :
       {vod.build(), live.build(), VastBuilder::typical("ad-1").build(), withPreroll.build(),
        StreamInitAnswerBuilder::live().build(), StreamInitAnswerBuilder::vod().build()}) {
    for (const auto& finding : inspect(text).findings) {
      EXPECT_EQ(finding.rule, "tracking-never-sent") << finding.text << "\n" << text;
    }
  }
}

struct PlacedFinding {
  std::string rule, place, inText, document;
};

TEST(Rules, NameThePlaceAndWhatIsThere) {
  const std::string vast = R"("vast":"<VAST>\n<Ad>\r\n é<Impression>u&amp;v</Impression></Ad>")";
  const PlacedFinding cases[] = {
      {"ping-pieces", R"($.ads["ad-1"].vast 3:3)", "3 pieces",
       R"({"ads":{"ad-1":{)" + vast + "}}}"},
      {"vast-broken-behind-ad", R"($.ads["ad-1"].vast 3:40)", "the text ends before </VAST>",
       R"({"ads":{"ad-1":{)" + vast + "}}}"},
      {"wrong-type", R"($.times["12"][1].type)", "not a text",
       R"({"times":{"12":[{"type":"start","ad":"a"},{"type":4,"ad":"a"}]}})"},
      {"duplicate-key", "$.ads.a.break", "more than once",
       R"({"ads":{"a":{"break":1,"break":2}}})"},
      {"event-lost", R"($.times["20"][0])", "another ad, b, had started",
       R"({"ads":{"a":{"break":"k","position":1,"duration":10,"vast":"<VAST><Ad/></VAST>"},
                  "b":{"break":"k","position":2,"duration":10,"vast":"<VAST><Ad/></VAST>"}},
           "breaks":{"k":{"ads":2,"duration":20}},
           "times":{"10":[{"type":"start","ad":"a"}],"19":[{"type":"start","ad":"b"}],
                    "20":[{"type":"complete","ad":"a"}]}})"},
      {"ping-refused", "1:32", "neither http nor https",
       "<VAST><Ad><Impression><![CDATA[ftp://h/]]></Impression></Ad></VAST>"},
      {"ping-unfilled-macro", "1:23", "%5BCB%5D",
       "<VAST><Ad><Impression>http://h/[SDKV]?a[b]=%5BCB%5D</Impression></Ad></VAST>"},
      {"vast-over-limits", "1:1282", "deeper than 256",
       [] {
         std::string deep = "<VAST>";
         for (int i = 0; i < 300; ++i) deep += "<Ads>";
         return deep;
       }()},
  };
  for (const auto& [rule, place, inText, document] : cases) {
    const auto findings = inspect(document).findings;
    const auto found =
        std::find_if(findings.begin(), findings.end(), [&](auto& it) { return it.rule == rule; });
    ASSERT_NE(found, findings.end()) << rule;
    EXPECT_EQ(found->place, place) << rule;
    EXPECT_NE(found->text.find(inText), std::string::npos) << found->text;
  }
}

}  // namespace
}  // namespace xel::inspect
