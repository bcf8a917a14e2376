#include <cmath>
#include <initializer_list>
#include <string>
#include <string_view>

#include "document/JSONPath.h"
#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

enum class Type { text, number, integer, object, array };

std::string nameOf(Type type) {
  switch (type) {
    case Type::text:
      return "a text";
    case Type::number:
      return "a number";
    case Type::integer:
      return "a whole number of 64 bits";
    case Type::object:
      return "an object";
    case Type::array:
      return "an array";
  }
  return {};
}

bool isOf(Type type, const JSONValue& value) {
  switch (type) {
    case Type::text:
      return value.text().has_value();
    case Type::number:
      return value.number().has_value();
    case Type::integer:
      return value.integer().has_value();
    case Type::object:
      return value.isObject();
    case Type::array:
      return value.serialize().starts_with('[');
  }
  return false;
}

class TypeChecker {
 public:
  explicit TypeChecker(Findings& findings) : findings_(findings) {}

  void check(const JSONValue& value, const std::string& path, Type type) {
    if (!isOf(type, value)) {
      findings_.add("wrong-type", path,
                    "Here stands " + shortened(value.serialize()) + ", which is not " +
                        nameOf(type) + "; it counts as missing.");
    } else if (type == Type::integer && std::trunc(*value.number()) != *value.number()) {
      findings_.add(
          "number-fraction", path,
          numberText(*value.number()) + " counts as " + std::to_string(*value.integer()) + ".");
    }
  }

  struct Member {
    std::string_view name;
    Type type;
  };
  void checkMembers(const JSONValue& object, const std::string& path,
                    std::initializer_list<Member> members) {
    for (const auto& [name, type] : members) {
      if (object.has(name)) check(object[name], memberPath(path, name), type);
    }
  }

  /// A section whose members are objects with these members.
  void checkSection(const JSONValue& document, std::string_view name,
                    std::initializer_list<Member> members) {
    if (!document.has(name)) return;
    const auto path = memberPath("$", name);
    check(document[name], path, Type::object);
    document[name].forEachMember([&](std::string_view key, const JSONValue& entry) {
      check(entry, memberPath(path, key), Type::object);
      checkMembers(entry, memberPath(path, key), members);
    });
  }

  /// An array whose elements are objects with these members.
  void checkList(const JSONValue& list, const std::string& path,
                 std::initializer_list<Member> members) {
    check(list, path, Type::array);
    const auto elements = list.elements();
    for (std::size_t i = 0; i < elements.size(); ++i) {
      check(elements[i], elementPath(path, i), Type::object);
      checkMembers(elements[i], elementPath(path, i), members);
    }
  }

 private:
  Findings& findings_;
};

}  // namespace

void checkAnswerTypes(const JSONValue& answer, Findings& findings) {
  TypeChecker checker(findings);
  checker.checkMembers(answer, "$",
                       {{"stream_id", Type::text},
                        {"stream_manifest", Type::text},
                        {"stream_type", Type::text},
                        {"id3_events_url", Type::text},
                        {"polling_frequency", Type::number},
                        {"preroll_manifest", Type::text},
                        {"time_events_url", Type::text}});
  if (answer.has("subtitles")) {
    checker.checkList(answer["subtitles"], "$.subtitles",
                      {{"language", Type::text}, {"webvtt", Type::text}, {"ttml", Type::text}});
  }
}

void checkStreamInfoTypes(const JSONValue& streamInfo, Findings& findings) {
  TypeChecker checker(findings);
  checker.checkSection(streamInfo, "ads",
                       {{"break", Type::text},
                        {"vast", Type::text},
                        {"position", Type::integer},
                        {"duration", Type::number}});
  checker.checkSection(streamInfo, "breaks", {{"ads", Type::integer}, {"duration", Type::number}});
  checker.checkSection(streamInfo, "tags", {{"type", Type::text}, {"ad", Type::text}});
  if (streamInfo.has("times")) {
    checker.check(streamInfo["times"], "$.times", Type::object);
    streamInfo["times"].forEachMember([&](std::string_view second, const JSONValue& events) {
      checker.checkList(events, memberPath("$.times", second),
                        {{"type", Type::text}, {"ad", Type::text}});
    });
  }
  if (streamInfo.has("cuepoints")) {
    checker.checkList(streamInfo["cuepoints"], "$.cuepoints",
                      {{"start", Type::number}, {"end", Type::number}});
  }
}

}  // namespace xel::inspect
