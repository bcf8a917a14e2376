#include "xel/model/XELCompanion.h"

std::shared_ptr<XELCompanion> XELCompanion::initPrivate() {
  return std::make_shared<XELCompanion>(Token());
}
