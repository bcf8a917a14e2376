#pragma once

#include "inspect/Inspection.h"
#include "inspect/TextPage.h"

namespace xel::inspect {

/// Each ad of a document: its fields, creatives, companions, and the pings of each event.
void addAds(const Inspection& inspection, TextPage& page);

}  // namespace xel::inspect
