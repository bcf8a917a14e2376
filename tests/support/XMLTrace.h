#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/XMLReader.h"

namespace xel::test {

/// Writes down what a reader reports: `<name a="value"`, `/name`, `'characters'`, `[CDATA]`.
/// Attributes are asked for by name: a, b, c and d.
class XMLTrace : public XMLReaderDelegate {
 public:
  void parser_didStartElement_namespaceURI_qualifiedName_attributes(
      XMLReader&, std::string_view elementName, std::string_view, std::string_view,
      const XMLAttributes& attributes) override {
    events.push_back("<" + std::string(elementName));
    for (const char* name : {"a", "b", "c", "d"}) {
      if (const auto value = attributes.text(name)) {
        events.back() += " " + std::string(name) + "=\"" + *value + "\"";
      }
    }
  }
  void parser_didEndElement_namespaceURI_qualifiedName(XMLReader&, std::string_view elementName,
                                                       std::string_view,
                                                       std::string_view) override {
    events.push_back("/" + std::string(elementName));
  }
  void parser_foundCharacters(XMLReader&, std::string_view chunk) override {
    events.push_back("'" + std::string(chunk) + "'");
  }
  void parser_foundCDATA(XMLReader&, std::string_view bytes) override {
    events.push_back("[" + std::string(bytes) + "]");
  }

  std::vector<std::string> events;
};

/// What one run over a document reported, and whether it was well-formed.
struct XMLRun {
  explicit XMLRun(std::string_view document) {
    const auto trace = std::make_shared<XMLTrace>();
    const auto reader = XMLReader::initWithData(document);
    reader->setDelegate(trace);
    wellFormed = reader->parse();
    events = std::move(trace->events);
  }
  bool wellFormed;
  std::vector<std::string> events;
};

}  // namespace xel::test
