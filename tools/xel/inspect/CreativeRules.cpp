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
      findings_.add("linear-missing", place(vast_.ads().front()),
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
  std::string place(std::size_t element) const {
    return placeIn(path_, vast_.elements()[element].place);
  }

  void checkUnselected(std::size_t linear) {
    std::size_t pings = 0;
    for (std::size_t i = linear; i < vast_.elements().size(); ++i) {
      const auto event = vast_.contextOf(i).linear == linear ? vast_.eventOf(i) : std::nullopt;
      if (event && isPingedEvent(*event)) ++pings;
    }
    if (pings == 0) return;
    findings_.add("creative-not-selected", place(linear),
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
        findings_.add("universal-ad-id-late", place(i),
                      "The identifier " + quoted(identifierOf(i)) +
                          " follows the creative's Linear element and does not reach it" +
                          (earlier.empty() ? "; the creative has none." : "."));
      }
    }
    for (const auto i : earlier) {
      if (i == earlier.back()) break;
      findings_.add("universal-ad-id-replaced", place(i),
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
      findings_.add("companion-without-resource", place(companion),
                    "The companion has no StaticResource, so the host gets no URL to show.");
      return;
    }
    checkResource(resources.back());
    if (resources.size() > 1) {
      findings_.add("companion-resource-replaced", place(resources.front()),
                    "The companion has " + std::to_string(resources.size()) +
                        " StaticResource elements, and the last one counts.");
    }
  }

  void checkResource(std::size_t index) {
    const XMLPiece* kept = nullptr;
    std::size_t filled = 0;
    for (const auto& piece : vast_.elements()[index].pieces) {
      if (piece.isBehindElement) continue;
      kept = &piece;
      if (!piece.isBlank()) ++filled;
    }
    if (!kept || (filled == 1 && !kept->isBlank())) return;
    if (kept->isBlank()) {
      findings_.add("companion-resource-white-space", place(index),
                    filled == 0 ? "The companion's resource is white space only."
                                : "White space behind the companion's resource takes its place, so "
                                  "the host gets no URL to show.");
    } else {
      findings_.add("companion-resource-pieces", place(index),
                    "The URL of the companion's resource comes in pieces, and the last one, " +
                        quoted(kept->text) + ", is all that is kept.");
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
