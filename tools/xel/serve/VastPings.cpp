#include "serve/VastPings.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <memory>
#include <string_view>

#include <libxml/parser.h>
#include <libxml/tree.h>

namespace xel::serve {
namespace {

using Pings = std::map<std::string, std::vector<std::string>>;

struct FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
struct FreeText {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using Text = std::unique_ptr<xmlChar, FreeText>;

const char* charsOf(const Text& text) {
  return text ? reinterpret_cast<const char*>(text.get()) : "";
}

bool isNamed(const xmlNode* node, std::string_view name) {
  return node->type == XML_ELEMENT_NODE && reinterpret_cast<const char*>(node->name) == name;
}

/// Null where `parent` is null or has none.
xmlNode* childNamed(const xmlNode* parent, std::string_view name) {
  xmlNode* child = parent ? parent->children : nullptr;
  while (child && !isNamed(child, name)) child = child->next;
  return child;
}

std::string trimmed(std::string_view text) {
  constexpr auto space = " \t\r\n";
  const auto first = text.find_first_not_of(space);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(space) - first + 1));
}

void addURL(xmlNode* element, const std::string& event, Pings& pings) {
  const Text text(xmlNodeGetContent(element));
  pings[event].push_back(trimmed(charsOf(text)));
}

void addTracking(const xmlNode* parent, Pings& pings) {
  const xmlNode* events = childNamed(parent, "TrackingEvents");
  for (xmlNode* each = events ? events->children : nullptr; each; each = each->next) {
    if (!isNamed(each, "Tracking")) continue;
    const Text name(xmlGetProp(each, reinterpret_cast<const xmlChar*>("event")));
    std::string event = charsOf(name);
    std::transform(event.begin(), event.end(), event.begin(),
                   [](unsigned char character) { return std::tolower(character); });
    addURL(each, event, pings);
  }
}

/// Null when no creative is linear.
const xmlNode* firstLinear(const xmlNode* creatives) {
  for (xmlNode* each = creatives ? creatives->children : nullptr; each; each = each->next) {
    if (!isNamed(each, "Creative")) continue;
    if (const xmlNode* linear = childNamed(each, "Linear")) return linear;
  }
  return nullptr;
}

}  // namespace

Pings vastPings(const std::string& vast) {
  if (vast.size() > std::numeric_limits<int>::max()) return {};
  const std::unique_ptr<xmlDoc, FreeDocument> document(
      xmlReadMemory(vast.data(), static_cast<int>(vast.size()), nullptr, nullptr,
                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  if (!document) return {};
  const xmlNode* ad = childNamed(childNamed(xmlDocGetRootElement(document.get()), "Ad"), "InLine");
  Pings pings;
  for (xmlNode* each = ad ? ad->children : nullptr; each; each = each->next) {
    if (isNamed(each, "Impression")) addURL(each, "start", pings);
  }
  addTracking(ad, pings);
  addTracking(firstLinear(childNamed(ad, "Creatives")), pings);
  return pings;
}

}  // namespace xel::serve
