#include "xel/session/XELStreamManagerDelegate.h"

XELStreamManagerDelegate::~XELStreamManagerDelegate() = default;
