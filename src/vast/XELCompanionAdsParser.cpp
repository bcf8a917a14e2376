#include "vast/XELCompanionAdsParser.h"

void XELCompanionAdsParser::parser_didStartElement_namespaceURI_qualifiedName_attributes(
    xel::XMLReader&, std::string_view elementName, std::string_view, std::string_view,
    const xel::XMLAttributes& attributes) {
  openElement(elementName);
  if (elementName == "Tracking") {
    setTrackingEvent(attributes);
  } else if (elementName == "Companion") {
    currentCompanion_ = XELCompanion::initPrivate();
    currentCompanion_->setWidth(xel::leadingInteger(attributes["width"].value_or("")));
    currentCompanion_->setHeight(xel::leadingInteger(attributes["height"].value_or("")));
    currentCompanion_->setApiFramework(attributes.text("apiFramework"));
  }
}

void XELCompanionAdsParser::parser_foundCharacters(xel::XMLReader&, std::string_view chunk) {
  if (!currentCompanion_) return;
  if (currentElement() == "Tracking") {
    if (const auto& event = currentTrackingEvent()) {
      currentCompanion_->addEvent_trackingURL(*event, std::string(chunk));
    }
  } else if (currentElement() == "StaticResource") {
    currentCompanion_->setStaticResourceURL(std::string(chunk));
  }
}

void XELCompanionAdsParser::parser_didEndElement_namespaceURI_qualifiedName(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view) {
  closeElement();
  if (elementName == "CompanionAds") {
    finish(reader, std::move(companions_));
  } else if (elementName == "Companion") {
    if (currentCompanion_) companions_.push_back(std::move(currentCompanion_));
  }
}
