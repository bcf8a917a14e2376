#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <expat.h>

namespace xel::test {

/// The trace of `XMLTrace.h` from another parser, whose pieces of text are joined where they adjoin
/// and are no references.
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

}  // namespace xel::test
