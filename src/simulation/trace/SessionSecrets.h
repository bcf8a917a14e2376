#pragma once

#include "xel/session/XELStreamRequest.h"

#include "simulation/trace/Redactor.h"

namespace xel::simulation {

/// Makes secrets of what authorises the request, and of what it tells of the viewer.
void addSecrets(Redactor& redactor, const XELStreamRequest& request);

}  // namespace xel::simulation
