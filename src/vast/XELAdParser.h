#pragma once

#include <memory>
#include <string_view>

#include "xel/model/XELAd.h"

#include "vast/VastElementParser.h"
#include "vast/XELCreativesParser.h"

/// Reads one VAST Ad element. Elements outside Creatives are matched by name alone, wherever they
/// stand; impressions are filed under "start", since they go out with it.
class XELAdParser final : public std::enable_shared_from_this<XELAdParser>,
                          public xel::VastElementParser<std::shared_ptr<XELAd>> {
 public:
  void parser_didStartElement_namespaceURI_qualifiedName_attributes(
      xel::XMLReader& reader, std::string_view elementName, std::string_view namespaceURI,
      std::string_view qualifiedName, const xel::XMLAttributes& attributes) override;
  void parser_didEndElement_namespaceURI_qualifiedName(xel::XMLReader& reader,
                                                       std::string_view elementName,
                                                       std::string_view namespaceURI,
                                                       std::string_view qualifiedName) override;
  void parser_foundCharacters(xel::XMLReader& reader, std::string_view chunk) override;

 private:
  std::shared_ptr<XELAd> ad_ = XELAd::initPrivate();
  std::shared_ptr<XELCreativesParser> creativesParser_;
};
