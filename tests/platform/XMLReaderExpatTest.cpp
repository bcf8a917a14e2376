#include <random>
#include <utility>

#include <expat.h>
#include <gtest/gtest.h>

#include "support/XMLTrace.h"

namespace xel::test {
namespace {

/// The same trace from another parser, whose pieces of text are joined where they adjoin and are
/// no references.
class ExpatTrace {
 public:
  explicit ExpatTrace(const std::string& document) : document_(document) {
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(
        parser_,
        [](void* user, const char* name, const char** attributes) {
          self(user).startElement(name, attributes);
        },
        [](void* user, const char* name) { self(user).add("/" + std::string(name)); });
    XML_SetCharacterDataHandler(parser_, [](void* user, const char* text, int length) {
      self(user).characters({text, static_cast<std::size_t>(length)});
    });
    XML_SetCdataSectionHandler(
        parser_, [](void* user) { self(user).openSection(); },
        [](void* user) { self(user).closeSection(); });
    XML_SetCommentHandler(parser_, [](void* user, const char*) { self(user).endText(); });
    XML_SetProcessingInstructionHandler(
        parser_, [](void* user, const char*, const char*) { self(user).endText(); });
    const int length = static_cast<int>(document.size());
    wellFormed = XML_Parse(parser_, document.data(), length, 1) == XML_STATUS_OK;
    XML_ParserFree(parser_);
  }

  bool wellFormed;
  std::vector<std::string> events;

 private:
  static ExpatTrace& self(void* user) { return *static_cast<ExpatTrace*>(user); }

  void startElement(const char* name, const char** attributes) {
    std::string event = "<" + std::string(name);
    for (const std::string wanted : {"a", "b", "c", "d"}) {
      for (const char** pair = attributes; *pair; pair += 2) {
        if (wanted == pair[0]) event += " " + wanted + "=\"" + pair[1] + "\"";
      }
    }
    add(std::move(event));
  }
  void characters(std::string_view piece) {
    const auto index = static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_));
    const bool reference = !inSection_ && document_[index] == '&';
    if (reference) endText();
    text_ += piece;
    if (reference) endText();
  }
  void openSection() {
    endText();
    inSection_ = true;
  }
  void closeSection() {
    events.push_back("[" + std::exchange(text_, {}) + "]");
    inSection_ = false;
  }
  void add(std::string event) {
    endText();
    events.push_back(std::move(event));
  }
  void endText() {
    if (!text_.empty()) events.push_back("'" + std::exchange(text_, {}) + "'");
  }

  const std::string& document_;
  const XML_Parser parser_ = XML_ParserCreate("UTF-8");
  std::string text_;
  bool inSection_ = false;
};

/// Well-formed documents with everything in them that a delegate hears of, and what it does not.
class RandomDocument {
 public:
  explicit RandomDocument(unsigned seed) : random_(seed) {
    text = oneOf({"", "\xEF\xBB\xBF"}) +
           oneOf({"", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"}) + between() +
           oneOf({"", "<!DOCTYPE r>"}) + between();
    addElement(0);
    text += between();
  }

  std::string text;

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }
  std::string oneOf(const std::vector<const char*>& choices) {
    return choices[below(choices.size())];
  }
  std::string between() { return oneOf({"", "\n", "<!-- & < é -->", "<?pi?>\r\n "}); }
  std::string reference() {
    return oneOf(
        {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#38;", "&#xA;", "&#13;", "&#233;"});
  }
  std::string run() {
    std::string run;
    for (std::size_t left = 1 + below(below(8) ? 12 : 700); left > 0; --left) {
      run += oneOf({"x", "=", "'", "\"", ">", "/", ";", " ", "\t", "\n", "\r\n", "\r", "é", "😀"});
    }
    return run;
  }
  std::string attributes() {
    std::string attributes;
    for (const std::string name : {"d", "b", "a", "x", "c"}) {
      if (below(4)) continue;
      attributes += oneOf({" ", "\n "}) + name + oneOf({"=", " = "}) + "\"";
      for (std::size_t left = below(5); left > 0; --left) {
        attributes += below(2) ? reference() : oneOf({"v", " ", "\t", "\r\n", ">", "'", "é"});
      }
      attributes += '"';
    }
    return attributes + oneOf({"", " ", "\n"});
  }
  void addElement(int depth) {
    const std::string name = oneOf({"e", "Ad", "ns:e", "é", "_-.1"});
    text += "<" + name + attributes();
    if (below(6) == 0) {
      text += "/>";
      return;
    }
    text += ">";
    for (std::size_t left = below(8); left > 0; --left) {
      const std::size_t kind = below(depth < 5 ? 6 : 4);
      if (kind == 0) text += reference();
      if (kind == 1) text += "<![CDATA[" + oneOf({"", "&amp;<b>", run().c_str()}) + "]]]>";
      if (kind == 2) text += between();
      if (kind == 3) text += run();
      if (kind >= 4) addElement(depth + 1);
    }
    text += "</" + name + oneOf({"", " "}) + ">";
  }

  std::mt19937 random_;
};

TEST(XMLReaderBesideExpat, ReportsTheSameEventsForRandomDocuments) {
  for (unsigned seed = 0; seed < 4000; ++seed) {
    const std::string document = RandomDocument(seed).text;
    const ExpatTrace expected(document);
    const XMLRun run(document);
    ASSERT_TRUE(expected.wellFormed && run.wellFormed) << seed << "\n" << document;
    ASSERT_EQ(run.events, expected.events) << seed << "\n" << document;
  }
}

}  // namespace
}  // namespace xel::test
