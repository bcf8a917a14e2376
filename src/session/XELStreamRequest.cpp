#include "xel/session/XELStreamRequest.h"

XELStreamRequest::~XELStreamRequest() = default;
