#include "xel/monitor/XELStreamMonitorDelegate.h"

XELStreamMonitorDelegate::~XELStreamMonitorDelegate() = default;
