#pragma once

#include <string>
#include <vector>

#include "xel/platform/JSONValue.h"

#include "inspect/ClientView.h"

namespace xel::inspect {

// Runs of the real library over the simulation kit.

AnswerView runAnswer(const std::string& answer, const ClientFacts& facts);

/// Each ad of the document in a session of its own, with all events in order.
std::vector<AdView> runAds(const JSONValue& json, const StreamDocument& document,
                           const ClientFacts& facts);

/// Visits each second of an on-demand document once, in order.
PlayThrough playThrough(const JSONValue& json, const StreamDocument& document,
                        const ClientFacts& facts);

}  // namespace xel::inspect
