#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "xel/model/XELCompanion.h"

#include "vast/VastElementParser.h"

namespace xel {

using Companions = std::vector<std::shared_ptr<XELCompanion>>;

}  // namespace xel

/// Reads one VAST CompanionAds element.
class XELCompanionAdsParser final : public xel::VastElementParser<xel::Companions> {
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
  xel::Companions companions_;
  std::shared_ptr<XELCompanion> currentCompanion_;
};
