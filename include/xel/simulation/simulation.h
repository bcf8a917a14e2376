#pragma once

/// The whole simulation kit: what a host application needs to test itself without a network, a
/// player or a clock.

#include "xel/simulation/JSONWriter.h"
#include "xel/simulation/ObservingDisplay.h"
#include "xel/simulation/RecordingDelegate.h"
#include "xel/simulation/Redaction.h"
#include "xel/simulation/ScriptedDisplay.h"
#include "xel/simulation/ScriptedMediaPlayer.h"
#include "xel/simulation/SimulatedPlatform.h"
#include "xel/simulation/StreamInfoBuilder.h"
#include "xel/simulation/StreamInitAnswerBuilder.h"
#include "xel/simulation/TraceReader.h"
#include "xel/simulation/TraceRecorder.h"
#include "xel/simulation/TraceReplay.h"
#include "xel/simulation/VastBuilder.h"
