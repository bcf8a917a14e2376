#include "vast/XELAdParser.h"

#include "vast/HandOff.h"

using xel::VastElement;

void XELAdParser::parser_didStartElement_namespaceURI_qualifiedName_attributes(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view,
    const xel::XMLAttributes& attributes) {
  switch (openElement(elementName)) {
    case VastElement::ad:
      ad_->setAdID(attributes.text("id"));
      break;
    case VastElement::creatives:
      xel::handOff(reader, shared_from_this(), &XELAdParser::creativesParser_, elementName,
                   attributes,
                   [](XELAdParser& self, const xel::Creatives& creatives,
                      const xel::Companions& companions) {
                     self.ad_->addCreatives(creatives);
                     self.ad_->addCompanions(companions);
                   });
      break;
    default:
      openURLElement(attributes);
  }
}

void XELAdParser::parser_foundCharacters(xel::XMLReader&, std::string_view chunk) {
  switch (currentElement()) {
    case VastElement::adSystem:
      ad_->setAdSystem(std::string(chunk));
      break;
    case VastElement::adTitle:
      ad_->setAdTitle(std::string(chunk));
      break;
    case VastElement::description:
      ad_->setAdDescription(std::string(chunk));
      break;
    case VastElement::error:
    case VastElement::impression:
    case VastElement::tracking:
      if (const auto& event = currentTrackingEvent()) {
        ad_->addEvent_trackingURL(*event, std::string(chunk));
      }
      break;
    default:
      break;
  }
}

void XELAdParser::parser_didEndElement_namespaceURI_qualifiedName(xel::XMLReader& reader,
                                                                  std::string_view elementName,
                                                                  std::string_view,
                                                                  std::string_view) {
  closeElement();
  if (xel::vastElementNamed(elementName) == VastElement::ad) finish(reader, ad_);
}
