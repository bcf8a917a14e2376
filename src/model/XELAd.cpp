#include "xel/model/XELAd.h"

std::shared_ptr<XELAd> XELAd::initPrivate() { return std::make_shared<XELAd>(Token()); }

void XELAd::addCompanions(const std::vector<std::shared_ptr<XELCompanion>>& companions) {
  companions_.insert(companions_.end(), companions.begin(), companions.end());
}

void XELAd::addCreatives(const std::vector<std::shared_ptr<XELCreative>>& creatives) {
  creatives_.insert(creatives_.end(), creatives.begin(), creatives.end());
}
