#include "inspect/XMLOutline.h"

#include <algorithm>
#include <memory>
#include <mutex>

#include <libxml/SAX.h>
#include <libxml/dict.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include "inspect/XMLLimits.h"

namespace xel::inspect {
namespace {

std::string_view viewOf(const xmlChar* text) {
  return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

std::string_view viewOf(const xmlChar* text, int length) {
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

std::string withNormalLineEnds(std::string_view text) {
  std::string normal;
  normal.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      normal += text[i];
    } else if (i + 1 == text.size() || text[i + 1] != '\n') {
      normal += '\n';
    }
  }
  return normal;
}

/// Turns offsets, which ask in any order, into places.
class Places {
 public:
  explicit Places(std::string_view text) : text_(text), lines_{0} {
    for (auto end = text.find('\n'); end != std::string_view::npos;
         end = text.find('\n', end + 1)) {
      lines_.push_back(end + 1);
    }
  }

  XMLPlace at(std::size_t offset) const {
    const auto next = std::upper_bound(lines_.begin(), lines_.end(), offset);
    const auto line = static_cast<std::size_t>(next - lines_.begin());
    const auto before = text_.substr(*(next - 1), offset - *(next - 1));
    const auto characters = std::count_if(before.begin(), before.end(), [](char byte) {
      return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    });
    return {line, static_cast<std::size_t>(characters) + 1};
  }

 private:
  std::string_view text_;
  std::vector<std::size_t> lines_;
};

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text), places_(text) {}

  XMLOutline read() {
    const auto whole = std::min(text_.size(), maxBytes);
    const auto length = tagOverLimit(text_.substr(0, whole));
    parse(length);
    if (isTooDeep_) return std::move(outline_);
    if (length < whole) {
      fail(length, "an element has more than " + std::to_string(maxAttributes) + " attributes",
           true);
    } else if (length < text_.size()) {
      fail(length, "the document is longer than 64 MiB", true);
    }
    return std::move(outline_);
  }

 private:
  static Reader& self(void* user) { return *static_cast<Reader*>(user); }

  static void freeContext(xmlParserCtxt* context) {
    xmlFreeDoc(context->myDoc);
    xmlFreeParserCtxt(context);
  }

  static xmlSAXHandler* handler() {
    static xmlSAXHandler handler = [] {
      xmlSAXHandler h{};
      h.startElement = [](void* user, const xmlChar* name, const xmlChar** attributes) {
        self(user).startElement(name, attributes);
      };
      h.endElement = [](void* user, const xmlChar*) { self(user).endElement(); };
      h.characters = [](void* user, const xmlChar* text, int length) {
        self(user).characters(viewOf(text, length));
      };
      h.ignorableWhitespace = h.characters;
      h.cdataBlock = [](void* user, const xmlChar* text, int length) {
        self(user).cdata(viewOf(text, length));
      };
      h.comment = [](void* user, const xmlChar*) { self(user).endText(0); };
      h.processingInstruction = [](void* user, const xmlChar*, const xmlChar*) {
        self(user).endText(0);
      };
      h.reference = [](void* user, const xmlChar*) { self(user).endText(0); };
      return h;
    }();
    return &handler;
  }

  void parse(std::size_t length) {
    static std::once_flag initialised;
    std::call_once(initialised, xmlInitParser);
    const std::unique_ptr<xmlParserCtxt, decltype(&freeContext)> context(
        xmlCreatePushParserCtxt(handler(), this, nullptr, 0, nullptr), &freeContext);
    context_ = context.get();
    xmlCtxtUseOptions(context_, XML_PARSE_SAX1 | XML_PARSE_NOENT | XML_PARSE_NONET |
                                    XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC |
                                    XML_PARSE_HUGE);
    xmlDictSetLimit(context_->dict, maxBytesOfNames);
    xmlSwitchEncoding(context_, XML_CHAR_ENCODING_UTF8);
    const bool isWhole = length == text_.size();
    xmlParseChunk(context_, text_.data(), static_cast<int>(length), isWhole ? 1 : 0);
    if (isTooDeep_ || !isWhole || context_->wellFormed != 0) return;
    const auto* error = xmlCtxtGetLastError(context_);
    if (!error || !error->message) return fail(offset(), "it is not well-formed", false);
    std::string reason = error->message;
    reason.erase(reason.find_last_not_of(" \n") + 1);
    // The parser calls this content behind the end, too.
    if (error->code == XML_ERR_DOCUMENT_END && !open_.empty()) {
      reason = "the text ends before </" + outline_.elements[open_.back()].name + ">";
    }
    fail(offset(), std::move(reason), error->code == XML_ERR_NO_MEMORY);
    const auto line = static_cast<std::size_t>(std::max(error->line, 1));
    const auto column = static_cast<std::size_t>(std::max(error->int2, 1));
    if (line >= outline_.fault->place.line) outline_.fault->place = {line, column};
  }

  /// Where the parser stands.
  std::size_t offset() const { return std::min(offset_, text_.size()); }
  void follow() {
    const xmlParserInput& input = *context_->input;
    offset_ = input.consumed + static_cast<std::size_t>(input.cur - input.base);
  }

  void fail(std::size_t offset, std::string reason, bool isOverLimit) {
    outline_.fault = XMLFault{places_.at(offset), std::move(reason), isOverLimit};
  }

  void startElement(const xmlChar* name, const xmlChar** attributes) {
    endText(1);
    XMLElement element;
    element.name = viewOf(name);
    // No "<" stands in a tag but the one that it begins with.
    element.place = places_.at(text_.rfind('<', offset() > 0 ? offset() - 1 : 0));
    for (; attributes && *attributes; attributes += 2) {
      element.attributes.emplace_back(viewOf(attributes[0]), viewOf(attributes[1]));
    }
    if (!open_.empty()) {
      element.parent = open_.back();
      outline_.elements[open_.back()].hasElements = true;
    }
    open_.push_back(outline_.elements.size());
    outline_.elements.push_back(std::move(element));
    if (open_.size() <= maxDepth) return;
    outline_.fault = XMLFault{outline_.elements.back().place,
                              "elements are nested deeper than " + std::to_string(maxDepth), true};
    outline_.elements.pop_back();
    isTooDeep_ = true;
    xmlStopParser(context_);
  }

  void endElement() {
    endText(0);
    if (open_.empty()) return;
    outline_.elements[open_.back()].isClosed = true;
    open_.pop_back();
  }

  void cdata(std::string_view bytes) {
    constexpr std::string_view end = "]]>";
    endText(bytes.size() + end.size());
    const auto length = bytes.size() + end.size();
    add(XMLPiece::Kind::cdata, std::string(bytes), textEnd_ - std::min(length, textEnd_));
  }

  // libxml2 hands over a run of plain text in pieces. Each is looked up in the document, where a
  // reference is told apart by its "&", and pieces that adjoin are one.
  void characters(std::string_view piece) {
    follow();
    if (textEnd_ < text_.size() && text_[textEnd_] == '&') {
      reportText();
      const auto begin = textEnd_;
      textBegin_ = textEnd_ = std::min(text_.find(';', begin), text_.size() - 1) + 1;
      add(XMLPiece::Kind::reference, std::string(piece), begin);
    } else {
      textEnd_ = std::min(textEnd_ + piece.size(), text_.size());
    }
  }

  /// @param ahead bytes of the markup behind the text that the parser has still to read.
  void endText(std::size_t ahead) {
    reportText();
    follow();
    textBegin_ = textEnd_ = std::min(offset_ + ahead, text_.size());
  }

  void reportText() {
    if (textEnd_ == textBegin_) return;
    add(XMLPiece::Kind::text, std::string(text_.substr(textBegin_, textEnd_ - textBegin_)),
        textBegin_);
  }

  void add(XMLPiece::Kind kind, std::string text, std::size_t offset) {
    if (open_.empty()) return;
    auto& element = outline_.elements[open_.back()];
    element.pieces.push_back({kind, std::move(text), places_.at(offset), element.hasElements});
  }

  const std::string_view text_;
  const Places places_;
  xmlParserCtxt* context_ = nullptr;
  XMLOutline outline_;
  /// Indexes of the elements that are open.
  std::vector<std::size_t> open_;
  bool isTooDeep_ = false;
  std::size_t offset_ = 0;
  /// The plain text that has been read and not yet reported, as a range of the document.
  std::size_t textBegin_ = 0;
  std::size_t textEnd_ = 0;
};

}  // namespace

std::optional<std::string_view> XMLElement::attribute(std::string_view wanted) const {
  for (const auto& [attributeName, value] : attributes) {
    if (attributeName == wanted) return value;
  }
  return std::nullopt;
}

XMLElement::DirectPieces XMLElement::directPieces() const {
  DirectPieces direct;
  for (const auto& piece : pieces) {
    if (piece.isBehindElement) break;
    ++(piece.isBlank() ? direct.blank : direct.filled);
    direct.last = &piece;
  }
  return direct;
}

XMLOutline XMLOutline::read(std::string_view text) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  const auto normal = withNormalLineEnds(text);
  return Reader(normal).read();
}

}  // namespace xel::inspect
