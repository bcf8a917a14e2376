#include "vast/XELCompanionAdsParser.h"

using xel::VastElement;

void XELCompanionAdsParser::parser_didStartElement_namespaceURI_qualifiedName_attributes(
    xel::XMLReader&, std::string_view elementName, std::string_view, std::string_view,
    const xel::XMLAttributes& attributes) {
  switch (openElement(elementName)) {
    case VastElement::tracking:
      setTrackingEvent(attributes);
      break;
    case VastElement::companion:
      currentCompanion_ = XELCompanion::initPrivate();
      currentCompanion_->setWidth(xel::leadingInteger(attributes["width"].value_or("")));
      currentCompanion_->setHeight(xel::leadingInteger(attributes["height"].value_or("")));
      currentCompanion_->setApiFramework(attributes.text("apiFramework"));
      break;
    default:
      break;
  }
}

void XELCompanionAdsParser::parser_foundCharacters(xel::XMLReader&, std::string_view chunk) {
  if (!currentCompanion_) return;
  if (currentElement() == VastElement::tracking) {
    if (const auto& event = currentTrackingEvent()) {
      currentCompanion_->addEvent_trackingURL(*event, std::string(chunk));
    }
  } else if (currentElement() == VastElement::staticResource) {
    currentCompanion_->setStaticResourceURL(std::string(chunk));
  }
}

void XELCompanionAdsParser::parser_didEndElement_namespaceURI_qualifiedName(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view) {
  closeElement();
  const VastElement element = xel::vastElementNamed(elementName);
  if (element == VastElement::companionAds) {
    finish(reader, std::move(companions_));
  } else if (element == VastElement::companion && currentCompanion_) {
    companions_.push_back(std::move(currentCompanion_));
  }
}
