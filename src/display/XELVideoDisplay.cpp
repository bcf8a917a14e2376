#include "xel/display/XELVideoDisplay.h"

XELVideoDisplay::~XELVideoDisplay() = default;
XELVideoDisplayDelegate::~XELVideoDisplayDelegate() = default;
