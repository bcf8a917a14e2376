#include "platform/XMLReader.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include <libxml/SAX.h>
#include <libxml/dict.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

namespace xel {
namespace {

std::string_view viewOf(const xmlChar* text) noexcept {
  return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

/// Line ends as XML 1.0 section 2.11 has them.
std::string withNormalLineEnds(std::string_view data) {
  std::string normal;
  normal.reserve(data.size());
  for (std::size_t i = 0; i < data.size(); ++i) {
    if (data[i] != '\r') {
      normal += data[i];
    } else if (i + 1 == data.size() || data[i + 1] != '\n') {
      normal += '\n';
    }
  }
  return normal;
}

bool hasTooManyAttributes(std::string_view tag) noexcept {
  int attributes = 0;
  char quote = 0;
  for (const char c : tag) {
    if (quote) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      break;
    } else if (c == '=' && ++attributes > XMLReader::maxAttributes) {
      return true;
    }
  }
  return false;
}

/// What ends the section that the markup opens, in which no tag stands; empty for a tag.
std::string_view endOfSection(std::string_view markup) noexcept {
  if (markup.starts_with("<!")) {
    if (markup.starts_with("<![CDATA[")) return "]]>";
    if (markup.starts_with("<!--")) return "-->";
  }
  return markup.starts_with("<?") ? "?>" : std::string_view();
}

constexpr std::size_t shortestTagOverLimit =
    (XMLReader::maxAttributes + 1) * std::string_view(" a=''").size();

/// From one "<" to the next, or to the end.
std::string_view markupAt(std::string_view data, std::size_t position) noexcept {
  return data.substr(position, data.find('<', position + 1) - position);
}

/// Whether anything in the document looks like a tag with too many attributes; it may also stand in
/// a section. Most documents are cleared in a few leaps from "<" to "<".
bool mayExceedAttributeLimit(std::string_view data) noexcept {
  std::size_t position = data.find('<');
  while (position != std::string_view::npos) {
    const std::string_view ahead = data.substr(position + 1, shortestTagOverLimit);
    // Many times as fast as rfind, which goes byte by byte.
    if (const void* leap = memrchr(ahead.data(), '<', ahead.size())) {
      position = static_cast<std::size_t>(static_cast<const char*>(leap) - data.data());
      continue;
    }
    const std::string_view markup = markupAt(data, position);
    if (endOfSection(markup).empty() && hasTooManyAttributes(markup)) return true;
    position = data.find('<', position + 1);
  }
  return false;
}

/// How much of the document lies before the first start tag with too many attributes: libxml2
/// compares each attribute with all the others before it reports them.
std::size_t bytesWithinAttributeLimit(std::string_view data) noexcept {
  if (!mayExceedAttributeLimit(data)) return data.size();
  // The literals of a document type may hold the marks of sections that are none.
  const bool hasDocumentType = data.find("<!DOCTYPE") != std::string_view::npos;
  std::size_t position = data.find('<');
  while (position != std::string_view::npos) {
    const std::string_view sectionEnd = endOfSection(data.substr(position));
    if (!sectionEnd.empty() && !hasDocumentType) {
      position = data.find('<', data.find(sectionEnd, position));
    } else {
      const std::string_view tag = markupAt(data, position);
      if (tag.size() > shortestTagOverLimit && hasTooManyAttributes(tag)) return position;
      position = data.find('<', position + 1);
    }
  }
  return data.size();
}

}  // namespace

std::optional<std::string_view> XMLAttributes::operator[](std::string_view name) const noexcept {
  for (const unsigned char* const* pair = pairs_; pair && *pair; pair += 2) {
    if (viewOf(pair[0]) == name) return viewOf(pair[1]);
  }
  return std::nullopt;
}

std::optional<std::string> XMLAttributes::text(std::string_view name) const {
  const auto value = (*this)[name];
  return value ? std::optional<std::string>(*value) : std::nullopt;
}

/// One run over the document: libxml2's callbacks, turned into the delegate's events.
///
/// libxml2 hands over a run of plain text in pieces. Each piece is looked up in the document, where
/// a reference is told apart by its "&", and pieces that adjoin are reported as one.
class XMLReader::Events {
 public:
  Events(XMLReader& reader, std::string_view document) : reader_(reader), document_(document) {}

  bool run(std::size_t length) {
    static std::once_flag initialised;
    std::call_once(initialised, xmlInitParser);
    const std::unique_ptr<xmlParserCtxt, decltype(&freeContext)> context(
        xmlCreatePushParserCtxt(handler(), this, nullptr, 0, nullptr), &freeContext);
    if (!context) return false;
    context_ = context.get();
    xmlCtxtUseOptions(context_, XML_PARSE_SAX1 | XML_PARSE_NOENT | XML_PARSE_NONET |
                                    XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC |
                                    XML_PARSE_HUGE);
    // Else the cost of many different names would grow with their square.
    xmlDictSetLimit(context_->dict, maxBytesOfNames);
    // Nothing is guessed from the first bytes.
    xmlSwitchEncoding(context_, XML_CHAR_ENCODING_UTF8);
    const bool whole = length == document_.size();
    xmlParseChunk(context_, document_.data(), static_cast<int>(length), whole ? 1 : 0);
    return whole && context_->wellFormed != 0 && context_->disableSAX == 0;
  }

 private:
  static Events& self(void* user) noexcept { return *static_cast<Events*>(user); }

  static void freeContext(xmlParserCtxt* context) {
    xmlFreeDoc(context->myDoc);  // Made where entities are declared.
    xmlFreeParserCtxt(context);
  }

  static xmlSAXHandler* handler() {
    static xmlSAXHandler handler = [] {
      xmlSAXHandler h{};
      h.startElement = [](void* user, const xmlChar* name, const xmlChar** attributes) {
        self(user).startElement(viewOf(name), XMLAttributes(attributes));
      };
      h.endElement = [](void* user, const xmlChar* name) { self(user).endElement(viewOf(name)); };
      h.characters = [](void* user, const xmlChar* text, int length) {
        self(user).characters(
            {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
      };
      h.ignorableWhitespace = h.characters;
      h.cdataBlock = [](void* user, const xmlChar* text, int length) {
        self(user).cdata({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
      };
      h.comment = [](void* user, const xmlChar*) { self(user).endText(0); };
      h.processingInstruction = [](void* user, const xmlChar*, const xmlChar*) {
        self(user).endText(0);
      };
      // Of an entity that may have been declared elsewhere; nothing stands for it.
      h.reference = [](void* user, const xmlChar*) { self(user).endText(0); };
      return h;
    }();
    return &handler;
  }

  void startElement(std::string_view name, const XMLAttributes& attributes) {
    constexpr std::size_t closingBracket = 1;
    endText(closingBracket);
    if (++depth_ > maxDepth) {
      xmlStopParser(context_);
      return;
    }
    if (auto* delegate = reader_.delegateForNextEvent()) {
      delegate->parser_didStartElement_namespaceURI_qualifiedName_attributes(reader_, name, {},
                                                                             name, attributes);
    }
  }

  void endElement(std::string_view name) {
    endText(0);
    --depth_;
    if (auto* delegate = reader_.delegateForNextEvent()) {
      delegate->parser_didEndElement_namespaceURI_qualifiedName(reader_, name, {}, name);
    }
  }

  void cdata(std::string_view bytes) {
    constexpr std::string_view sectionEnd = "]]>";
    endText(bytes.size() + sectionEnd.size());
    if (auto* delegate = reader_.delegateForNextEvent())
      delegate->parser_foundCDATA(reader_, bytes);
  }

  void characters(std::string_view piece) {
    if (textEnd_ < document_.size() && document_[textEnd_] == '&') {
      reportText();
      const std::size_t semicolon = document_.find(';', textEnd_);
      textBegin_ = textEnd_ = std::min(semicolon, document_.size() - 1) + 1;
      deliver(piece);
    } else {
      textEnd_ = std::min(textEnd_ + piece.size(), document_.size());
    }
  }

  /// Reports the text before a piece of markup.
  /// @param ahead bytes of that markup that libxml2 has still to read.
  void endText(std::size_t ahead) {
    reportText();
    const xmlParserInput& input = *context_->input;
    textBegin_ = textEnd_ =
        input.consumed + static_cast<std::size_t>(input.cur - input.base) + ahead;
  }

  void reportText() {
    if (textEnd_ > textBegin_) deliver(document_.substr(textBegin_, textEnd_ - textBegin_));
  }

  void deliver(std::string_view chunk) {
    if (auto* delegate = reader_.delegateForNextEvent())
      delegate->parser_foundCharacters(reader_, chunk);
  }

  XMLReader& reader_;
  const std::string_view document_;
  xmlParserCtxt* context_ = nullptr;
  int depth_ = 0;
  /// The plain text that has been read and not yet reported, as a range of the document.
  std::size_t textBegin_ = 0;
  std::size_t textEnd_ = 0;
};

std::shared_ptr<XMLReader> XMLReader::initWithData(std::string_view data) {
  return std::make_shared<XMLReader>(Token(), data);
}

XMLReaderDelegate* XMLReader::delegateForNextEvent() noexcept {
  replaced_.clear();
  return delegate_.get();
}

bool XMLReader::parse() {
  const auto keepAlive = shared_from_this();
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (data_.starts_with(byteOrderMark)) data_.remove_prefix(byteOrderMark.size());
  std::string normalised;
  if (data_.find('\r') != std::string_view::npos) {
    normalised = withNormalLineEnds(data_);
    data_ = normalised;
  }
  const std::size_t length = bytesWithinAttributeLimit(data_.substr(0, maxBytes));
  const bool wellFormed = Events(*this, data_).run(length);
  data_ = {};
  delegate_.reset();
  replaced_.clear();
  return wellFormed;
}

}  // namespace xel
