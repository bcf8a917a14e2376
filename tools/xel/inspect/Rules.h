#pragma once

#include <string>
#include <string_view>

#include "xel/platform/JSONValue.h"

#include "inspect/ClientView.h"
#include "inspect/Finding.h"
#include "inspect/VastOutline.h"

namespace xel::inspect {

// The families of rules. `path` is where a VAST text stands in its document; empty for a document
// of its own.

/// Members that stand twice in their object.
void checkDuplicateKeys(std::string_view json, Findings& findings);
void checkAnswerTypes(const JSONValue& answer, Findings& findings);
void checkStreamInfoTypes(const JSONValue& streamInfo, Findings& findings);

void checkAnswer(const JSONValue& answer, const AnswerView& view, Findings& findings);

void checkBreaks(const StreamDocument& document, Findings& findings);
void checkEvents(const ClientView& view, Findings& findings);
void checkCuepoints(const ClientView& view, Findings& findings);

void checkVast(const VastOutline& vast, const std::string& path, Findings& findings);
void checkTracking(const VastOutline& vast, const AdView& view, const std::string& path,
                   Findings& findings);
void checkCreatives(const VastOutline& vast, const std::string& path, Findings& findings);

}  // namespace xel::inspect
