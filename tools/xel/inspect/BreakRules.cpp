#include <algorithm>
#include <map>
#include <string>

#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

class BreakChecker {
 public:
  BreakChecker(const StreamDocument& document, Findings& findings)
      : document_(document), findings_(findings) {}

  void check() {
    for (const auto& ad : document_.ads) checkAd(ad);
    for (const auto& adBreak : document_.breaks) checkBreak(adBreak);
  }

 private:
  void checkAd(const StreamDocument::Ad& ad) {
    if (ad.vast.value_or("").empty()) {
      findings_.add("ad-without-vast", ad.path,
                    "The ad has no VAST document, so its start does nothing but end the ad before "
                    "it.");
    }
    if (!(ad.duration.value_or(0) > 0)) {
      findings_.add("ad-without-duration", ad.path,
                    "The ad has no duration, so it counts as over one second after its start.");
    }
    if (ad.position.value_or(-1) < 1) {
      findings_.add("ad-without-position", ad.path,
                    ad.position.value_or(-1) == -1
                        ? "The ad has no position, so its complete ends the break."
                        : "The ad's position is " + std::to_string(*ad.position) +
                              ", and positions count from 1.");
    }
  }

  void checkBreak(const StreamDocument::Break& adBreak) {
    if (adBreak.path.empty()) {
      findings_.add("break-unknown", document_.ads[adBreak.ads.front()].path,
                    (adBreak.key.empty() ? "The ad names no break"
                                         : "The ad's break " + quoted(adBreak.key) +
                                               " is not described under \"breaks\"") +
                        ", so the break has no duration and is over after a second.");
    } else if (adBreak.ads.empty()) {
      findings_.add("break-empty", adBreak.path, "No ad names this break.");
    } else {
      checkCount(adBreak);
      checkDuration(adBreak);
    }
    checkPositions(adBreak);
  }

  void checkCount(const StreamDocument::Break& adBreak) {
    const auto count = static_cast<std::int64_t>(adBreak.ads.size());
    const auto total = adBreak.totalAds.value_or(-1);
    if (total == count) return;
    const auto have = counted(adBreak.ads.size(), "ad") + (count == 1 ? " names" : " name") + " it";
    const bool hasLast = std::any_of(adBreak.ads.begin(), adBreak.ads.end(), [&](std::size_t ad) {
      return document_.ads[ad].position == total;
    });
    findings_.add("break-count", adBreak.path,
                  total == -1 ? "The break does not tell its count of ads, so the first "
                                "complete of any ad ends it."
                  : hasLast   ? "The break counts " + std::to_string(total) + " and " + have +
                                  "; it ends with the ad at that position."
                            : "The break counts " + std::to_string(total) + " and " + have +
                                  "; no ad is at that position, so only overrun ends it.");
  }

  void checkDuration(const StreamDocument::Break& adBreak) {
    const auto duration = adBreak.duration.value_or(0);
    double sum = 0;
    for (const auto ad : adBreak.ads) sum += document_.ads[ad].duration.value_or(0);
    if (!(duration > 0)) {
      findings_.add("break-without-duration", adBreak.path,
                    "The break has no duration, so it counts as over one second after it began.");
    } else if (sum > duration + 1) {
      findings_.add("break-too-short", adBreak.path,
                    "The break lasts " + numberText(duration) + " s and its ads together " +
                        numberText(sum) + " s; it is over at " + numberText(duration + 1) +
                        " s, and later quartiles and completes are lost.");
    }
  }

  void checkPositions(const StreamDocument::Break& adBreak) {
    std::map<std::int64_t, const StreamDocument::Ad*> positions;
    for (const auto index : adBreak.ads) {
      const auto& ad = document_.ads[index];
      if (ad.position.value_or(-1) < 1) continue;
      const auto [entry, isNew] = positions.emplace(*ad.position, &ad);
      if (!isNew) {
        findings_.add("position-repeated", ad.path,
                      "The ad " + quoted(entry->second->key) + " is at position " +
                          std::to_string(*ad.position) + " of the break too.");
      }
    }
    if (!positions.empty() && positions.begin()->first != 1) {
      findings_.add("break-without-first", positions.begin()->second->path,
                    "This is the first ad of its break, at position " +
                        std::to_string(positions.begin()->first) +
                        "; the host does not hear that the break starts.");
    }
  }

  const StreamDocument& document_;
  Findings& findings_;
};

}  // namespace

void checkBreaks(const StreamDocument& document, Findings& findings) {
  BreakChecker(document, findings).check();
}

}  // namespace xel::inspect
