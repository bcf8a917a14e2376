#include <filesystem>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>

#include "platform/XMLReader.h"
#include "support/XMLTrace.h"

namespace xel::test {
namespace {

using Events = std::vector<std::string>;

TEST(XMLReader, ReportsRunsReferencesAndSectionsAsChunksOfTheirOwn) {
  const std::string line = std::string(299, 'x') + "é\n" + std::string(500, ' ');
  std::string lines;
  while (lines.size() < 200000) lines += line;
  const struct {
    std::string content;
    Events expected;
  } cases[] = {
      {" two\n lines\t", {"' two\n lines\t'"}},
      {"café au lait 😀!", {"'café au lait 😀!'"}},
      {line, {"'" + line + "'"}},
      {lines + "&amp;" + line + "&#9;", {"'" + lines + "'", "'&'", "'" + line + "'", "'\t'"}},
      {"a&amp;b", {"'a'", "'&'", "'b'"}},
      {"&lt;&gt;&quot;&#38;&#xE9;&#13;", {"'<'", "'>'", "'\"'", "'&'", "'é'", "'\r'"}},
      {"&amp;amp;&#38;lt;", {"'&'", "'amp;'", "'&'", "'lt;'"}},
      {"\n <![CDATA[a&amp;<b>]]]>\n", {"'\n '", "[a&amp;<b>]]", "'\n'"}},
      {"a<![CDATA[b]]><![CDATA[]]>c", {"'a'", "[b]", "[]", "'c'"}},
      {"<![CDATA[" + lines + "]]>x", {"[" + lines + "]", "'x'"}},
      {"a<!-- b & c -->d<!---->e<?f?>g<?h?>", {"'a'", "'d'", "'e'", "'g'"}},
      {"a<b/>c<b >é</b >d", {"'a'", "<b", "/b", "'c'", "<b", "'é'", "/b", "'d'"}},
      {"a\r\nb\rc\r\r\nd<![CDATA[\r\n]]>", {"'a\nb\nc\n\nd'", "[\n]"}}};
  for (auto [content, expected] : cases) {
    const XMLRun run("<t>" + content + "</t>");
    expected.insert(expected.begin(), "<t");
    expected.push_back("/t");
    EXPECT_EQ(run.events, expected);
    EXPECT_TRUE(run.wellFormed) << content;
  }
}

TEST(XMLReader, TakesTheTextForUTF8WhateverItDeclares) {
  for (const char* prolog :
       {"", "\xEF\xBB\xBF", "<?xml version='1.0' encoding='UTF-16'?>\n", "\n\n<!DOCTYPE t><?p?>\n",
        "\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><!-- é -->"}) {
    const XMLRun run(prolog + std::string("<t>é 漢</t>\n<!-- end -->\n"));
    EXPECT_EQ(run.events, (Events{"<t", "'é 漢'", "/t"})) << prolog;
    EXPECT_TRUE(run.wellFormed) << prolog;
  }
}

/// Does something inside a start event.
class Acting : public XMLTrace {
 public:
  std::function<void(XMLReader&)> act;
  void parser_didStartElement_namespaceURI_qualifiedName_attributes(XMLReader& reader,
                                                                    std::string_view,
                                                                    std::string_view,
                                                                    std::string_view,
                                                                    const XMLAttributes&) override {
    act(reader);
    events.push_back("still here");
  }
};

TEST(XMLReader, TheVeryNextEventGoesToTheNewDelegateOrNowhere) {
  auto first = std::make_shared<Acting>();
  const std::weak_ptr<Acting> watched = first;
  const auto second = std::make_shared<Acting>();
  auto reader = XMLReader::initWithData("<t>a<b/></t>");
  second->act = [](XMLReader& running) { running.setDelegate({}); };
  first->act = [&](XMLReader& running) {
    running.setDelegate({});
    running.setDelegate(second);
    first.reset();
    reader.reset();
  };
  reader->setDelegate(first);
  EXPECT_TRUE(reader->parse());
  EXPECT_EQ(second->events, (Events{"'a'", "still here"}));
  EXPECT_TRUE(watched.expired());
}

std::string nested(std::size_t depth, const std::string& innermost = "") {
  std::string text = innermost;
  for (std::size_t i = 0; i < depth; ++i) text = "<e>" + text + "</e>";
  return text;
}

std::string withAttributes(int count) {
  std::string text = "<e";
  for (int i = 0; i < count; ++i) text += " x" + std::to_string(i) + "='>='";
  return text + "/>";
}

TEST(XMLReader, TakesWhatIsOverALimitForNotWellFormedThere) {
  const struct {
    const char* limit;
    std::string content;
    bool wellFormed;
    std::size_t events;
  } cases[] = {
      {"256 levels", nested(255), true, 510 + 1},
      {"257 levels", nested(256), false, 255},
      {"empty element on level 257", nested(255, "<e/>"), false, 255},
      {"very deep", nested(10000), false, 255},
      {"256 attributes", withAttributes(256), true, 2 + 1},
      {"257 attributes", withAttributes(257), false, 0},
      {"100,000 attributes", withAttributes(100000), false, 0},
      {"no tags", "<!--" + withAttributes(300) + "--><?x " + withAttributes(300) + "?>", true, 1},
      {"more bytes", std::string(XMLReader::maxBytes, ' '), false, 0}};
  for (const auto& [limit, content, wellFormed, events] : cases) {
    const XMLRun run("<t><b/>" + content + "</t>");
    EXPECT_EQ(run.wellFormed, wellFormed) << limit;
    ASSERT_EQ(run.events.size(), 3 + events) << limit;
    EXPECT_EQ(Events(run.events.begin(), run.events.begin() + 3), (Events{"<t", "<b", "/b"}));
  }
  EXPECT_EQ(XMLRun("<!DOCTYPE t SYSTEM '<!--'><t>" + withAttributes(257) + "</t>").events,
            Events{"<t"});
  std::string names;
  for (int i = 0; i < 400000; ++i) names += "<n" + std::to_string(i) + "/>";
  const XMLRun manyNames("<t>" + names + "</t>");
  EXPECT_FALSE(manyNames.wellFormed);
  EXPECT_GT(manyNames.events.size(), 200000u);
}

TEST(XMLReader, ExpandsNoDeclaredEntityAndReadsNothingElse) {
  const auto file = std::filesystem::temp_directory_path() / "xel-xml-reader-test.txt";
  std::ofstream(file) << "<!ENTITY e 'secret'>";
  const std::string system = " SYSTEM 'file://" + file.string() + "'";
  std::string bomb = "<!DOCTYPE t [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 20; ++i) {
    bomb += "<!ENTITY a" + std::to_string(i) + " '";
    for (int k = 0; k < 10; ++k) bomb += "&a" + std::to_string(i - 1) + ";";
    bomb += "'>";
  }
  const std::pair<std::string, Events> cases[] = {
      {bomb + "]><t><b/>&a19;</t>", {"<t", "<b", "/b"}},
      {bomb + "]><t><b a='&a19;'/></t>", {"<t"}},
      {"<!DOCTYPE t [<!ENTITY e 'x'>]><t>a<b/>&e;b</t>", {"<t", "'a'", "<b", "/b"}},
      {"<!DOCTYPE t [<!ENTITY e" + system + ">]><t>&e;</t>", {"<t"}},
      {"<!DOCTYPE t [<!ENTITY % p" + system + "> %p;]><t>&e;</t>", {}},
      {"<t>a<b/>&nbsp;b</t>", {"<t", "'a'", "<b", "/b"}},
      {"<!DOCTYPE t" + system + "><t>a&e;bé&amp;<b a='&e;'/>é</t>",
       {"<t", "'a'", "'bé'", "'&'", "<b a=\"\"", "/b", "'é'", "/t"}}};
  for (const auto& [document, expected] : cases) {
    EXPECT_EQ(XMLRun(document).events, expected) << document;
  }
  std::filesystem::remove(file);
}

TEST(XMLReader, StopsAtTheFirstError) {
  const std::pair<std::string, Events> cases[] = {
      {"", {}},
      {"text", {}},
      {"<t></u><v/>", {"<t"}},
      {"<t><b/>a & b</t>", {"<t", "<b", "/b"}},
      {"<t><b/><b a=1/></t>", {"<t", "<b", "/b"}},
      {"<t><b a='' a=''/></t>", {"<t"}},
      {"<t/><t/>", {"<t", "/t"}},
      {std::string("<t><b/>\0</t>", 12), {"<t", "<b", "/b"}},
      {std::string("\xFF\xFE<\0t\0/\0>\0", 10), {}},
      {std::string("<\0?\0t\0?\0>\0<\0t\0/\0>\0", 18), {}},
      {"<t><b/>\xFF</t>", {"<t", "<b", "/b"}},
      {"<t><b a='\xED\xA0\x80'/></t>", {"<t"}},
      {"<t>\x01</t>", {"<t"}}};
  for (const auto& [document, expected] : cases) {
    const XMLRun run(document);
    EXPECT_FALSE(run.wellFormed) << document;
    EXPECT_EQ(run.events, expected) << document;
  }
}

}  // namespace
}  // namespace xel::test
