#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

using Cuepoint = StreamDocument::Cuepoint;

std::string spanText(const Cuepoint& cuepoint) {
  return numberText(*cuepoint.start) + " to " + numberText(*cuepoint.end) + " s";
}

/// Those that the client keeps, in its order.
std::vector<Cuepoint> keptCuepoints(const StreamDocument& document, Findings& findings) {
  std::vector<Cuepoint> kept;
  for (const auto& cuepoint : document.cuepoints) {
    if (cuepoint.start && cuepoint.end) {
      kept.push_back(cuepoint);
    } else {
      findings.add("cuepoint-incomplete", cuepoint.path,
                   std::string("The cue point has no ") + (cuepoint.start ? "end" : "start") +
                       " and is left out.");
    }
  }
  std::stable_sort(kept.begin(), kept.end(),
                   [](const Cuepoint& a, const Cuepoint& b) { return *a.start < *b.start; });
  return kept;
}

void checkAdsOutside(const ClientView& view, Findings& findings) {
  const auto& document = view.document;
  for (const auto& adBreak : document.breaks) {
    for (const auto index : adBreak.ads) {
      const auto& ad = view.playThrough->ads[index];
      if (!ad || ad->adBreakInfo()->adBreakIndex() != -1) continue;
      findings.add("ad-outside-cuepoints", document.ads[index].path,
                   "The ad starts at " + numberText(ad->adStartTime()) +
                       " s, in no cue point; its break has index -1 and offset 0.");
      break;
    }
  }
}

}  // namespace

void checkCuepoints(const ClientView& view, Findings& findings) {
  const auto kept = keptCuepoints(view.document, findings);
  double latestEnd = -std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const auto& cuepoint = kept[i];
    if (*cuepoint.end < *cuepoint.start) {
      findings.add("cuepoint-inverted", cuepoint.path,
                   "The cue point ends before it starts (" + spanText(cuepoint) +
                       "); every conversion between stream and content time gives 0.");
    }
    if (*cuepoint.start < latestEnd) {
      findings.add("cuepoint-overlap", cuepoint.path,
                   "The cue point (" + spanText(cuepoint) + ") starts before " +
                       numberText(latestEnd) + " s, where an earlier one ends.");
    }
    latestEnd = std::max(latestEnd, *cuepoint.end);
    if (std::floor(*cuepoint.start) != *cuepoint.start) {
      findings.add("cuepoint-fraction", cuepoint.path,
                   "The cue point starts at " + numberText(*cuepoint.start) +
                       " s, a fraction of a second, and is never marked played.");
    } else if (view.playThrough && i < view.playThrough->cuepoints.size() &&
               !view.playThrough->cuepoints[i]->isPlayed()) {
      findings.add("cuepoint-without-start", cuepoint.path,
                   "No ad starts in second " + numberText(*cuepoint.start) +
                       ", so the cue point is never marked played.");
    }
  }
  if (view.playThrough) checkAdsOutside(view, findings);
}

}  // namespace xel::inspect
