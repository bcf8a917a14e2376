#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "common/Lowercased.h"
#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

/// The element that is read and that this name resembles; empty when it is that one, or none.
std::string_view resembledElement(std::string_view name) {
  constexpr std::array<std::string_view, 14> read = {
      "Ad",       "AdSystem",       "AdTitle",     "Companion",    "CompanionAds",
      "Creative", "Creatives",      "Description", "Error",        "Impression",
      "Linear",   "StaticResource", "Tracking",    "UniversalAdId"};
  const auto local = lowercased(name.substr(name.find(':') + 1));
  for (const auto element : read) {
    if (name != element && local == lowercased(element)) return element;
  }
  return {};
}

class VastChecker {
 public:
  VastChecker(const VastOutline& vast, const std::string& path, Findings& findings)
      : vast_(vast), path_(path), findings_(findings) {}

  void check() {
    checkFault();
    checkAds();
    for (std::size_t i = 0; i < vast_.elements().size(); ++i) {
      const auto& element = vast_.elements()[i];
      if (isExtension(i)) continue;
      if (const auto meant = resembledElement(element.name); !meant.empty()) {
        add("element-name", element.place,
            "The element <" + element.name + "> is not read as <" + std::string(meant) +
                ">; what it holds is lost.");
      }
      if (vast_.isOfFirstAd(i)) checkText(i);
    }
  }

 private:
  void add(RuleID rule, const XMLPlace& place, std::string text) {
    findings_.add(rule, path_, place, std::move(text));
  }

  bool isExtension(std::size_t index) const {
    for (std::optional<std::size_t> at = index; at; at = vast_.elements()[*at].parent) {
      if (vast_.elements()[*at].name.ends_with("Extensions")) return true;
    }
    return false;
  }

  void checkFault() {
    if (!vast_.fault()) return;
    const auto& fault = *vast_.fault();
    const std::string consequence = vast_.ads().empty()
                                        ? "no ad is complete before it, so the ad never starts."
                                        : "what stands behind it is not read.";
    const auto text = "Reading ends here (" + fault.reason + "); " + consequence;
    if (fault.isOverLimit) {
      add("vast-over-limits", fault.place, text);
    } else if (vast_.ads().empty()) {
      add("vast-ends-early", fault.place, text);
    } else {
      add("vast-broken-behind-ad", fault.place, text);
    }
  }

  void checkAds() {
    const auto& elements = vast_.elements();
    if (!elements.empty() && elements.front().name != "VAST") {
      add("vast-root", elements.front().place,
          "The document is <" + elements.front().name + "> and not <VAST>; it has " +
              counted(vast_.ads().size(), "Ad element") + ", wherever they stand.");
    }
    if (vast_.ads().empty()) {
      if (!vast_.fault()) {
        add("vast-without-ad", elements.empty() ? XMLPlace() : elements.front().place,
            "The document has no Ad element, so the ad never starts.");
      }
      return;
    }
    const auto& ads = vast_.ads();
    if (ads.size() > 1) {
      add("vast-several-ads", elements[ads[1]].place,
          "The document has " + std::to_string(ads.size()) +
              " ads; this and any later one is never shown or pinged.");
    }
    bool hasImpression = false;
    for (std::size_t i = 0; i < elements.size(); ++i) {
      if (!vast_.isOfFirstAd(i)) continue;
      if (elements[i].name == "Wrapper" && elements[i].parent == ads.front()) {
        add("vast-wrapper", elements[i].place,
            "The ad is a wrapper, which is not followed; of its pings only those that "
            "stand here are sent.");
      }
      if (elements[i].name == "Impression" && vast_.eventOf(i)) hasImpression = true;
    }
    if (!hasImpression) {
      add("impression-missing", elements[ads.front()].place,
          "The ad has no Impression, so no impression is counted.");
    }
  }

  void checkText(std::size_t index) {
    const auto& element = vast_.elements()[index];
    const bool isText =
        element.name == "AdTitle" || element.name == "AdSystem" || element.name == "Description";
    if (!isText || vast_.contextOf(index).region != VastRegion::ad) return;
    const auto pieces = element.directPieces();
    if (pieces.filled == 0 || pieces.isWhole()) return;
    add("text-pieces", element.place,
        "The text of " + element.name + " comes in pieces, and the last one, " +
            quoted(pieces.last->text) + ", is all that is kept.");
  }

  const VastOutline& vast_;
  const std::string& path_;
  Findings& findings_;
};

}  // namespace

void checkVast(const VastOutline& vast, const std::string& path, Findings& findings) {
  VastChecker(vast, path, findings).check();
}

}  // namespace xel::inspect
