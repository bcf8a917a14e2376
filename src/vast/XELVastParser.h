#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "xel/model/XELAd.h"

#include "platform/XMLReader.h"
#include "vast/XELAdParser.h"

/// Reads VAST documents into ads. Only a handful of elements are looked at; the rest passes unseen.
///
/// One document is read front to back by an XML reader whose delegate is handed down a chain of
/// element handlers: each deals with one element, hands the reader to a child when the child's
/// element opens, and gets it back when that element closes.
/// Threads: main run loop. Errors: see `parseVastDocument`.
class XELVastParser final : public std::enable_shared_from_this<XELVastParser>,
                            public xel::XMLReaderDelegate {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null.
  static std::shared_ptr<XELVastParser> init();
  explicit XELVastParser(Token) {}

  /// The ads of the document, in order; an ad counts once its element has closed. A document that
  /// is not well-formed yields the ads completed before its first error.
  /// @param vast UTF-8.
  std::vector<std::shared_ptr<XELAd>> parseVastDocument(std::string_view vast);

  void parser_didStartElement_namespaceURI_qualifiedName_attributes(
      xel::XMLReader& reader, std::string_view elementName, std::string_view namespaceURI,
      std::string_view qualifiedName, const xel::XMLAttributes& attributes) override;

 private:
  std::vector<std::shared_ptr<XELAd>> ads_;
  std::shared_ptr<XELAdParser> adParser_;
};
