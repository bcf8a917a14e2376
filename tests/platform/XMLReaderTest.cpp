#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>

#include "platform/XMLReader.h"
#include "support/PlatformTest.h"
#include "support/XMLTrace.h"

namespace xel::test {
namespace {

using Events = std::vector<std::string>;

struct ChunkCase {
  const char* behaviour;
  std::string content;
  Events expected;
};
class XMLChunks : public testing::TestWithParam<ChunkCase> {};

TEST_P(XMLChunks, AreRunsReferencesAndSections) {
  const XMLRun run("<t>" + GetParam().content + "</t>");
  Events expected{"<t"};
  expected.insert(expected.end(), GetParam().expected.begin(), GetParam().expected.end());
  expected.push_back("/t");
  EXPECT_EQ(run.events, expected);
  EXPECT_TRUE(run.wellFormed);
}

const std::string longLine = std::string(299, 'x') + "\xC3\xA9\n" + std::string(500, ' ');
std::string manyLines() {
  std::string text;
  while (text.size() < 200000) text += longLine;
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    , XMLChunks,
    testing::Values(
        ChunkCase{"PlainRun", " two\n lines\t", {"' two\n lines\t'"}},
        ChunkCase{"NonASCII",
                  "caf\xC3\xA9 au lait \xF0\x9F\x98\x80!",
                  {"'caf\xC3\xA9 au lait \xF0\x9F\x98\x80!'"}},
        ChunkCase{"LongRun", longLine, {"'" + longLine + "'"}},
        ChunkCase{"RunOf200000Bytes", manyLines(), {"'" + manyLines() + "'"}},
        ChunkCase{"EntityReference", "a&amp;b", {"'a'", "'&'", "'b'"}},
        ChunkCase{"References",
                  "&lt;&gt;&quot;&apos;&#38;&#x26;&#xE9;&#13;x",
                  {"'<'", "'>'", "'\"'", "'''", "'&'", "'&'", "'\xC3\xA9'", "'\r'", "'x'"}},
        ChunkCase{"EscapedReference", "&amp;amp;&#38;lt;", {"'&'", "'amp;'", "'&'", "'lt;'"}},
        ChunkCase{"LongRunsAroundReferences",
                  longLine + "&amp;" + manyLines() + "&#9;",
                  {"'" + longLine + "'", "'&'", "'" + manyLines() + "'", "'\t'"}},
        ChunkCase{"CDATA", "<![CDATA[a&amp;<b>\n]]]>", {"[a&amp;<b>\n]]"}},
        ChunkCase{"CDATAApart", "a<![CDATA[b]]><![CDATA[]]>c", {"'a'", "[b]", "[]", "'c'"}},
        ChunkCase{"PrettyPrintedCDATA", "\n  <![CDATA[u]]>\n", {"'\n  '", "[u]", "'\n'"}},
        ChunkCase{
            "LongCDATA", "<![CDATA[" + manyLines() + "]]>x", {"[" + manyLines() + "]", "'x'"}},
        ChunkCase{"CommentBetween", "a<!-- b & c -->d<!---->e", {"'a'", "'d'", "'e'"}},
        ChunkCase{"InstructionBetween", "a<?b c?>d<?e?>", {"'a'", "'d'"}},
        ChunkCase{"ElementsBetween",
                  "a<b/>c<b >\xC3\xA9</b >d",
                  {"'a'", "<b", "/b", "'c'", "<b", "'\xC3\xA9'", "/b", "'d'"}},
        ChunkCase{"LineEnds", "a\r\nb\rc\r\r\nd<![CDATA[\r\n]]>", {"'a\nb\nc\n\nd'", "[\n]"}}),
    behaviourName);

TEST(XMLReader, ReportsAttributesWithReferencesResolved) {
  EXPECT_EQ(XMLRun("<v:x.y-z a='1&amp;2&#38;3' b=\"\" c = '\xC3\xA9&lt;&quot;\n' D=''/>").events,
            (Events{"<v:x.y-z a=\"1&2&3\" b=\"\" c=\"\xC3\xA9<\" \"", "/v:x.y-z"}));
}

TEST(XMLReader, TakesTheTextForUTF8WhateverItDeclares) {
  for (const char* prolog :
       {"", "\xEF\xBB\xBF", "<?xml version='1.0' encoding='UTF-16'?>\n",
        "\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><!-- \xC3\xA9 -->",
        "\n\n<!DOCTYPE t><?pi?>\n"}) {
    const XMLRun run(prolog + std::string("<t>\xC3\xA9 \xE6\xBC\xA2</t>\n<!-- end -->\n"));
    EXPECT_EQ(run.events, (Events{"<t", "'\xC3\xA9 \xE6\xBC\xA2'", "/t"})) << prolog;
    EXPECT_TRUE(run.wellFormed) << prolog;
  }
}

/// Does something inside one of its own events.
class Acting : public XMLTrace {
 public:
  std::function<void(XMLReader&)> onStart;
  void parser_didStartElement_namespaceURI_qualifiedName_attributes(
      XMLReader& reader, std::string_view name, std::string_view uri, std::string_view qualified,
      const XMLAttributes& attributes) override {
    XMLTrace::parser_didStartElement_namespaceURI_qualifiedName_attributes(reader, name, uri,
                                                                           qualified, attributes);
    if (onStart) onStart(reader);
    events.push_back("after");  // Touches this object, dropped or not.
  }
};

TEST(XMLReader, TheVeryNextEventGoesToTheNewDelegate) {
  auto first = std::make_shared<Acting>();
  const std::weak_ptr<Acting> watched = first;
  auto second = std::make_shared<XMLTrace>();
  first->onStart = [&](XMLReader& reader) {
    reader.setDelegate({});
    reader.setDelegate(second);
    EXPECT_EQ(first->events, Events{"<t"});
    first.reset();
  };
  const auto reader = XMLReader::initWithData("<t>a<b/></t>");
  reader->setDelegate(first);
  EXPECT_TRUE(reader->parse());
  EXPECT_EQ(second->events, (Events{"'a'", "<b", "/b", "/t"}));
  EXPECT_TRUE(watched.expired());
}

TEST(XMLReader, DropsEventsWhileItHasNoDelegateAndKeepsItselfAlive) {
  auto acting = std::make_shared<Acting>();
  auto reader = XMLReader::initWithData("<t>a<b>c</b></t>");
  acting->onStart = [&](XMLReader& running) {
    running.setDelegate({});
    reader.reset();
  };
  reader->setDelegate(acting);
  EXPECT_TRUE(reader->parse());
  EXPECT_EQ(acting->events, (Events{"<t", "after"}));
}

std::string nested(int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += "<e>";
  for (int i = 0; i < depth; ++i) text += "</e>";
  return text;
}

std::string withAttributes(int count) {
  std::string text = "<e";
  for (int i = 0; i < count; ++i) text += " x" + std::to_string(i) + "='>='";
  return text + "/>";
}

TEST(XMLReader, TakesWhatIsOverALimitForNotWellFormedThere) {
  const Events before{"<t", "<b", "/b"};
  const struct {
    const char* limit;
    std::string document;
    bool wellFormed;
    std::size_t events;
  } cases[] = {
      {"256 levels", "<t><b/>" + nested(255) + "</t>", true, 3 + 510 + 1},
      {"257 levels", "<t><b/>" + nested(256) + "</t>", false, 3 + 255},
      {"very deep", "<t><b/>" + nested(100000), false, 3 + 255},
      {"empty element on level 257", "<t><b/>" + nested(255).insert(765, "<e/>") + "</t>", false,
       3 + 255},
      {"256 attributes", "<t><b/>" + withAttributes(256) + "</t>", true, 3 + 3},
      {"257 attributes", "<t><b/>" + withAttributes(257) + "</t>", false, 3},
      {"100,000 attributes", "<t><b/>" + withAttributes(100000) + "</t>", false, 3},
      {"no attributes",
       "<t><b/><!--" + withAttributes(300) + "--><?x " + withAttributes(300) + "?></t>", true, 4},
      {"more bytes", "<t><b/>" + std::string(XMLReader::maxBytes, ' ') + "</t>", false, 3},
  };
  for (const auto& each : cases) {
    const XMLRun run(each.document);
    EXPECT_EQ(run.wellFormed, each.wellFormed) << each.limit;
    EXPECT_EQ(run.events.size(), each.events) << each.limit;
    ASSERT_GE(run.events.size(), before.size()) << each.limit;
    EXPECT_EQ(Events(run.events.begin(), run.events.begin() + 3), before) << each.limit;
  }
}

TEST(XMLReader, ExpandsNoDeclaredEntityAndReadsNothingElse) {
  const auto file = std::filesystem::temp_directory_path() / "xel-xml-reader-secret.txt";
  std::ofstream(file) << "secret";
  std::string bomb = "<!DOCTYPE t [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 20; ++i) {
    const std::string earlier = "&a" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY a" + std::to_string(i) + " '";
    for (int k = 0; k < 10; ++k) bomb += earlier;
    bomb += "'>";
  }
  const std::string system = " SYSTEM 'file://" + file.string() + "'";
  const struct {
    const char* kind;
    std::string document;
    Events expected;
  } cases[] = {
      {"bomb", bomb + "]><t><b/>&a19;</t>", {"<t", "<b", "/b"}},
      {"bomb in attribute", bomb + "]><t><b/><b a='&a19;'/></t>", {"<t", "<b", "/b"}},
      {"declared", "<!DOCTYPE t [<!ENTITY e 'x'>]><t>a&e;b</t>", {"<t"}},
      {"external", "<!DOCTYPE t [<!ENTITY e" + system + ">]><t>&e;</t>", {"<t"}},
      {"undeclared", "<t>a&nbsp;b</t>", {"<t"}},
      {"external subset",
       "<!DOCTYPE t" + system + "><t>a&e;b\xC3\xA9&amp;<b/>\xC3\xA9</t>",
       {"<t", "'a'", "'b\xC3\xA9'", "'&'", "<b", "/b", "'\xC3\xA9'", "/t"}},
      {"parameter entity", "<!DOCTYPE t [<!ENTITY % p" + system + "> %p;]><t>&e;</t>", {}},
  };
  for (const auto& [kind, document, expected] : cases) {
    EXPECT_EQ(XMLRun(document).events, expected) << kind;
  }
  std::filesystem::remove(file);
}

TEST(XMLReader, StopsAtTheFirstError) {
  const struct {
    std::string document;
    Events expected;
  } cases[] = {
      {"", {}},
      {"text", {}},
      {"<t>a</u><v/>", {"<t"}},
      {"<t>a & b</t>", {"<t"}},
      {"<t><b/><b a=1/></t>", {"<t", "<b", "/b"}},
      {"<t><b a='' a=''/></t>", {"<t"}},
      {"<t/><t/>", {"<t", "/t"}},
      {std::string("<t><b/>a\0b</t>", 14), {"<t", "<b", "/b"}},
      {std::string("<\0t\0>\0", 6), {}},
      {std::string("\xFF\xFE<\0t\0/\0>\0", 10), {}},
      {"<t><b/>\xFF</t>", {"<t", "<b", "/b"}},
      {"<t><b/>\xC3</t>", {"<t", "<b", "/b"}},
      {"<t><b a='\xED\xA0\x80'/></t>", {"<t"}},
      {"<t>\x01</t>", {"<t"}},
  };
  for (const auto& [document, expected] : cases) {
    const XMLRun run(document);
    EXPECT_FALSE(run.wellFormed) << document;
    EXPECT_EQ(run.events, expected) << document;
  }
}

TEST(XMLReader, ADocumentCutAnywhereReportsNothingThatTheWholeDoesNot) {
  const std::string document =
      "<?xml version='1.0'?><!--c--><t "
      "a='&#x41;'>caf\xC3\xA9\r\n&amp;<b><![CDATA[d]]></b><?p?>e</t>";
  const XMLRun whole(document);
  ASSERT_TRUE(whole.wellFormed);
  for (std::size_t length = 0; length < document.size(); ++length) {
    const XMLRun cut(document.substr(0, length));
    EXPECT_FALSE(cut.wellFormed) << length;
    ASSERT_LT(cut.events.size(), whole.events.size()) << length;
    for (std::size_t i = 0; i < cut.events.size(); ++i) {
      // The last text may have been cut, too.
      const std::string& event = cut.events[i];
      const bool last = i + 1 == cut.events.size();
      const auto same = last && event[0] == '\'' ? event.substr(0, event.size() - 1) : event;
      EXPECT_TRUE(whole.events[i].starts_with(same)) << length << " " << event;
    }
  }
}

}  // namespace
}  // namespace xel::test
