#include "xel/model/XELCreative.h"

std::shared_ptr<XELCreative> XELCreative::init() { return std::make_shared<XELCreative>(Token()); }
