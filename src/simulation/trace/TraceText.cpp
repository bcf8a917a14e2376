#include "simulation/trace/TraceText.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "xel/platform/JSONValue.h"

namespace xel::simulation {
namespace {

std::string textOf(const JSONValue& value) {
  if (!value) return "none";
  if (const auto text = value.text()) return std::string(*text);
  return value.serialize();
}

/// What people tell one call from another by.
std::string subjectOf(const JSONValue& members) {
  std::string subject;
  for (const auto& value : {members["url"], members["seconds"], members["streamID"],
                            members["ad"]["adKey"], members["adBreakInfo"]["adBreakKey"],
                            members["remaining"], members["error"]["description"]}) {
    if (value) subject += ' ' + textOf(value);
  }
  return subject;
}

struct MemberDifference {
  std::string path;
  std::string expected;
  std::string got;
};

std::optional<MemberDifference> firstDifference(const JSONValue& expected, const JSONValue& got,
                                                const std::string& path) {
  const auto below = [&](const JSONValue& a, const JSONValue& b, const std::string& name) {
    return firstDifference(a, b, path.empty() ? name : path + '.' + name);
  };
  std::optional<MemberDifference> found;
  if (expected.isObject() && got.isObject()) {
    const auto visit = [&](std::string_view name, const JSONValue&) {
      if (!found) found = below(expected[name], got[name], std::string(name));
    };
    expected.forEachMember(visit);
    got.forEachMember(visit);
    return found;
  }
  const auto expectedItems = expected.elements();
  const auto gotItems = got.elements();
  if (!expectedItems.empty() && !gotItems.empty()) {
    for (std::size_t i = 0; i < std::max(expectedItems.size(), gotItems.size()) && !found; ++i) {
      found = below(i < expectedItems.size() ? expectedItems[i] : JSONValue(),
                    i < gotItems.size() ? gotItems[i] : JSONValue(), std::to_string(i));
    }
    return found;
  }
  if (bool(expected) == bool(got) && expected.serialize() == got.serialize()) return {};
  return MemberDifference{path, textOf(expected), textOf(got)};
}

}  // namespace

std::pair<std::string, std::string> describe(const TraceOutput* expected, const TraceOutput* got) {
  const auto text = [](const TraceOutput* output, const JSONValue& members) {
    return output ? output->name + subjectOf(members) : std::string("nothing");
  };
  const auto expectedMembers = expected ? JSONValue::parse(expected->members).value : JSONValue();
  const auto gotMembers = got ? JSONValue::parse(got->members).value : JSONValue();
  std::pair texts = {text(expected, expectedMembers), text(got, gotMembers)};
  if (texts.first != texts.second) return texts;
  if (const auto difference = firstDifference(expectedMembers, gotMembers, "")) {
    texts.first += " with " + difference->path + ' ' + difference->expected;
    texts.second += " with " + difference->path + ' ' + difference->got;
  }
  return texts;
}

}  // namespace xel::simulation
