#include "vast/XELCreativesParser.h"

#include "vast/HandOff.h"

using xel::VastElement;

void XELCreativesParser::parser_didStartElement_namespaceURI_qualifiedName_attributes(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view,
    const xel::XMLAttributes& attributes) {
  switch (openElement(elementName)) {
    case VastElement::creative:
      creativeID_ = attributes.text("id");
      creativeSequence_ = xel::leadingInteger(attributes["sequence"].value_or(""));
      break;
    case VastElement::universalAdId:
      universalAdIdValue_ = attributes.text("idValue");
      universalAdIdRegistry_ = attributes.text("idRegistry");
      break;
    case VastElement::linear:
      openLinear();
      break;
    case VastElement::companionAds:
      xel::handOff(
          reader, shared_from_this(), &XELCreativesParser::companionAdsParser_, elementName,
          attributes, [](XELCreativesParser& self, const xel::Companions& companions) {
            self.companions_.insert(self.companions_.end(), companions.begin(), companions.end());
          });
      break;
    default:
      openURLElement(attributes);
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
  switch (currentElement()) {
    case VastElement::error:
    case VastElement::impression:
    case VastElement::tracking:
      if (currentCreative_ && currentTrackingEvent()) {
        currentCreative_->addEvent_trackingURL(*currentTrackingEvent(), std::string(chunk));
      }
      break;
    case VastElement::universalAdId:
      if (const auto value = xel::trimmed(chunk); !universalAdIdValue_ && !value.empty()) {
        universalAdIdValue_ = value;
      }
      break;
    default:
      break;
  }
}

void XELCreativesParser::parser_didEndElement_namespaceURI_qualifiedName(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view) {
  closeElement();
  switch (xel::vastElementNamed(elementName)) {
    case VastElement::linear:
      if (currentCreative_) creatives_.push_back(std::move(currentCreative_));
      break;
    case VastElement::creative:
      creativeID_.reset();
      creativeSequence_ = 0;
      universalAdIdValue_.reset();
      universalAdIdRegistry_.reset();
      break;
    case VastElement::creatives:
      finish(reader, std::move(creatives_), std::move(companions_));
      break;
    default:
      break;
  }
}
