#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/model/XELCreative.h"

#include "vast/VastElementParser.h"
#include "vast/XELCompanionAdsParser.h"

namespace xel {

using Creatives = std::vector<std::shared_ptr<XELCreative>>;

}  // namespace xel

/// Reads the Creatives element of one VAST ad: a creative for each Linear element, with the
/// identity that its Creative element had when Linear opened, and all companions.
class XELCreativesParser final : public std::enable_shared_from_this<XELCreativesParser>,
                                 public xel::VastElementParser<xel::Creatives, xel::Companions> {
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
  void openLinear();

  xel::Creatives creatives_;
  xel::Companions companions_;
  std::optional<std::string> creativeID_;
  std::int64_t creativeSequence_ = 0;
  std::optional<std::string> universalAdIdValue_;
  std::optional<std::string> universalAdIdRegistry_;
  std::shared_ptr<XELCreative> currentCreative_;
  std::shared_ptr<XELCompanionAdsParser> companionAdsParser_;
};
