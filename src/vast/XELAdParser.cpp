#include "vast/XELAdParser.h"

#include "vast/HandOff.h"

void XELAdParser::parser_didStartElement_namespaceURI_qualifiedName_attributes(
    xel::XMLReader& reader, std::string_view elementName, std::string_view, std::string_view,
    const xel::XMLAttributes& attributes) {
  openElement(elementName);
  if (elementName == "Ad") {
    ad_->setAdID(attributes.text("id"));
  } else if (elementName == "Error") {
    setTrackingEvent("error");
  } else if (elementName == "Impression") {
    setTrackingEvent("start");
  } else if (elementName == "Tracking") {
    setTrackingEvent(attributes);
  } else if (elementName == "Creatives") {
    xel::handOff(
        reader, shared_from_this(), &XELAdParser::creativesParser_, elementName, attributes,
        [](XELAdParser& self, const xel::Creatives& creatives, const xel::Companions& companions) {
          self.ad_->addCreatives(creatives);
          self.ad_->addCompanions(companions);
        });
  }
}

void XELAdParser::parser_foundCharacters(xel::XMLReader&, std::string_view chunk) {
  const std::string& element = currentElement();
  if (element.empty()) return;
  if (element == "AdSystem") {
    ad_->setAdSystem(std::string(chunk));
  } else if (element == "AdTitle") {
    ad_->setAdTitle(std::string(chunk));
  } else if (element == "Description") {
    ad_->setAdDescription(std::string(chunk));
  } else if (element == "Error" || element == "Impression" || element == "Tracking") {
    if (const auto& event = currentTrackingEvent()) {
      ad_->addEvent_trackingURL(*event, std::string(chunk));
    }
  }
}

void XELAdParser::parser_didEndElement_namespaceURI_qualifiedName(xel::XMLReader& reader,
                                                                  std::string_view elementName,
                                                                  std::string_view,
                                                                  std::string_view) {
  closeElement();
  if (elementName == "Ad") finish(reader, ad_);
}
