#include "vast/XELVastParser.h"

#include <utility>

#include "vast/HandOff.h"

std::shared_ptr<XELVastParser> XELVastParser::init() {
  return std::make_shared<XELVastParser>(Token());
}

std::vector<std::shared_ptr<XELAd>> XELVastParser::parseVastDocument(std::string_view vast) {
  ads_.clear();
  const auto reader = xel::XMLReader::initWithData(vast);
  reader->setDelegate(weak_from_this());
  reader->parse();
  adParser_.reset();
  return std::exchange(ads_, {});
}

void XELVastParser::parser_didStartElement_namespaceURI_qualifiedName_attributes(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view,
    const xel::XMLAttributes& attributes) {
  if (elementName != "Ad") return;
  xel::handOff(
      reader, shared_from_this(), &XELVastParser::adParser_, elementName, attributes,
      [](XELVastParser& self, const std::shared_ptr<XELAd>& ad) { self.ads_.push_back(ad); });
}
