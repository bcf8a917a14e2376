#include <string>
#include <vector>

#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

class CreativeChecker {
 public:
  CreativeChecker(const VastOutline& vast, const std::string& path, Findings& findings)
      : vast_(vast), path_(path), findings_(findings) {}

  void check() {
    if (vast_.ads().empty()) return;
    const auto& linears = vast_.linears();
    if (linears.empty()) {
      add("linear-missing", vast_.ads().front(),
          "The ad has no linear creative; only its own pings are sent.");
    }
    for (const auto linear : linears) {
      if (linear != linears.front()) checkUnselected(linear);
      checkIdentifiers(linear);
    }
    for (std::size_t i = 0; i < vast_.elements().size(); ++i) {
      if (vast_.isOfFirstAd(i) && vast_.contextOf(i).companion == i) checkCompanion(i);
    }
  }

 private:
  void add(RuleID rule, std::size_t element, std::string text) {
    findings_.add(rule, path_, vast_.elements()[element].place, std::move(text));
  }

  void checkUnselected(std::size_t linear) {
    std::size_t pings = 0;
    for (std::size_t i = linear; i < vast_.elements().size(); ++i) {
      const auto event = vast_.contextOf(i).linear == linear ? vast_.eventOf(i) : std::nullopt;
      if (event && isPingedEvent(*event)) ++pings;
    }
    if (pings == 0) return;
    add("creative-not-selected", linear,
        "The ad's first linear creative is selected and not this one, whose " +
            counted(pings, "ping") + (pings == 1 ? " is" : " are") + " never sent.");
  }

  void checkIdentifiers(std::size_t linear) {
    const auto creative = vast_.contextOf(linear).creative;
    if (!creative) return;
    std::vector<std::size_t> earlier;
    for (std::size_t i = *creative; i < vast_.elements().size(); ++i) {
      const auto& context = vast_.contextOf(i);
      if (context.creative != creative || context.region != VastRegion::creatives) continue;
      if (vast_.elements()[i].name != "UniversalAdId" || identifierOf(i).empty()) continue;
      if (i < linear) {
        earlier.push_back(i);
      } else {
        add("universal-ad-id-late", i,
            "The identifier " + quoted(identifierOf(i)) +
                " follows the creative's Linear element and does not reach it" +
                (earlier.empty() ? "; the creative has none." : "."));
      }
    }
    for (const auto i : earlier) {
      if (i == earlier.back()) break;
      add("universal-ad-id-replaced", i,
          "The identifier " + quoted(identifierOf(i)) + " is replaced by " +
              quoted(identifierOf(earlier.back())) + ".");
    }
  }

  std::string identifierOf(std::size_t index) const {
    const auto& element = vast_.elements()[index];
    if (const auto value = element.attribute("idValue")) return std::string(*value);
    for (const auto& piece : element.pieces) {
      if (piece.isBehindElement || piece.isBlank()) continue;
      const auto begin = piece.text.find_first_not_of(" \t\r\n");
      return piece.text.substr(begin, piece.text.find_last_not_of(" \t\r\n") - begin + 1);
    }
    return {};
  }

  void checkCompanion(std::size_t companion) {
    std::vector<std::size_t> resources;
    for (std::size_t i = companion; i < vast_.elements().size(); ++i) {
      if (vast_.contextOf(i).companion != companion) continue;
      if (vast_.elements()[i].name == "StaticResource") resources.push_back(i);
    }
    if (resources.empty()) {
      add("companion-without-resource", companion,
          "The companion has no StaticResource, so the host gets no URL to show.");
      return;
    }
    checkResource(resources.back());
    if (resources.size() > 1) {
      add("companion-resource-replaced", resources.front(),
          "The companion has " + std::to_string(resources.size()) +
              " StaticResource elements, and the last one counts.");
    }
  }

  void checkResource(std::size_t index) {
    const auto pieces = vast_.elements()[index].directPieces();
    if (!pieces.last || pieces.isWhole()) return;
    if (pieces.last->isBlank()) {
      add("companion-resource-white-space", index,
          pieces.filled == 0 ? "The companion's resource is white space only."
                             : "White space behind the companion's resource takes its place, so "
                               "the host gets no URL to show.");
    } else {
      add("companion-resource-pieces", index,
          "The URL of the companion's resource comes in pieces, and the last one, " +
              quoted(pieces.last->text) + ", is all that is kept.");
    }
  }

  const VastOutline& vast_;
  const std::string& path_;
  Findings& findings_;
};

}  // namespace

void checkCreatives(const VastOutline& vast, const std::string& path, Findings& findings) {
  CreativeChecker(vast, path, findings).check();
}

}  // namespace xel::inspect
