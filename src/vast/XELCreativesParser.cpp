#include "vast/XELCreativesParser.h"

#include "vast/HandOff.h"

void XELCreativesParser::parser_didStartElement_namespaceURI_qualifiedName_attributes(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view,
    const xel::XMLAttributes& attributes) {
  openElement(elementName);
  if (elementName == "Creative") {
    creativeID_ = attributes.text("id");
    creativeSequence_ = xel::leadingInteger(attributes["sequence"].value_or(""));
  } else if (elementName == "UniversalAdId") {
    universalAdIdValue_ = attributes.text("idValue");
    universalAdIdRegistry_ = attributes.text("idRegistry");
  } else if (elementName == "Linear") {
    openLinear();
  } else if (elementName == "CompanionAds") {
    xel::handOff(reader, shared_from_this(), &XELCreativesParser::companionAdsParser_, elementName,
                 attributes, [](XELCreativesParser& self, const xel::Companions& companions) {
                   self.companions_.insert(self.companions_.end(), companions.begin(),
                                           companions.end());
                 });
  } else if (elementName == "Error") {
    setTrackingEvent("error");
  } else if (elementName == "Impression") {
    setTrackingEvent("start");
  } else if (elementName == "Tracking") {
    setTrackingEvent(attributes);
  }
}

void XELCreativesParser::openLinear() {
  currentCreative_ = XELCreative::init();
  currentCreative_->setAdID(creativeID_);
  currentCreative_->setSequence(creativeSequence_);
  currentCreative_->setIsLinear(true);
  currentCreative_->setUniversalAdIdValue(universalAdIdValue_);
  currentCreative_->setUniversalAdIdRegistry(universalAdIdRegistry_);
}

void XELCreativesParser::parser_foundCharacters(xel::XMLReader&, std::string_view chunk) {
  const std::string& element = currentElement();
  if (element == "Error" || element == "Impression" || element == "Tracking") {
    if (currentCreative_ && currentTrackingEvent()) {
      currentCreative_->addEvent_trackingURL(*currentTrackingEvent(), std::string(chunk));
    }
  } else if (element == "UniversalAdId" && !universalAdIdValue_) {
    const std::string_view value = xel::trimmed(chunk);
    if (!value.empty()) universalAdIdValue_ = value;
  }
}

void XELCreativesParser::parser_didEndElement_namespaceURI_qualifiedName(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view) {
  closeElement();
  if (elementName == "Linear") {
    if (currentCreative_) creatives_.push_back(std::move(currentCreative_));
  } else if (elementName == "Creative") {
    creativeID_.reset();
    creativeSequence_ = 0;
    universalAdIdValue_.reset();
    universalAdIdRegistry_.reset();
  } else if (elementName == "Creatives") {
    finish(reader, std::move(creatives_), std::move(companions_));
  }
}
