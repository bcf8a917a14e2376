#pragma once

/// Everything that a host application includes, but for `xel/simulation/`.

#include "xel/display/XELAVPlayerVideoDisplay.h"
#include "xel/display/XELVideoDisplay.h"
#include "xel/model/XELAd.h"
#include "xel/model/XELAdBreakInfo.h"
#include "xel/model/XELCompanion.h"
#include "xel/model/XELCreative.h"
#include "xel/model/XELCuepoint.h"
#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"
#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
