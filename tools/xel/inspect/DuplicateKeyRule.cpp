#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/basic_parser_impl.hpp>

#include "document/JSONPath.h"
#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

namespace json = boost::json;

/// Follows a JSON text and remembers the names of the members of every object that is open.
class MemberNames {
 public:
  static constexpr std::size_t max_object_size = SIZE_MAX;
  static constexpr std::size_t max_array_size = SIZE_MAX;
  static constexpr std::size_t max_key_size = SIZE_MAX;
  static constexpr std::size_t max_string_size = SIZE_MAX;

  explicit MemberNames(Findings& findings) : findings_(findings) {}

  bool on_document_begin(json::error_code&) { return true; }
  bool on_document_end(json::error_code&) { return true; }
  bool on_object_begin(json::error_code&) { return open(); }
  bool on_object_end(std::size_t, json::error_code&) { return close(); }
  bool on_array_begin(json::error_code&) { return open(); }
  bool on_array_end(std::size_t, json::error_code&) { return close(); }
  bool on_key_part(json::string_view text, std::size_t, json::error_code&) {
    key_.append(text.data(), text.size());
    return true;
  }
  bool on_key(json::string_view text, std::size_t, json::error_code&) {
    key_.append(text.data(), text.size());
    auto& level = levels_.back();
    level.name = std::exchange(key_, {});
    if (!level.names.insert(level.name).second) {
      findings_.add("duplicate-key", path(),
                    "The member " + quoted(level.name) +
                        " stands in its object more than once; only the last one counts.");
    }
    return true;
  }
  bool on_string_part(json::string_view, std::size_t, json::error_code&) { return true; }
  bool on_string(json::string_view, std::size_t, json::error_code&) { return pass(); }
  bool on_number_part(json::string_view, json::error_code&) { return true; }
  bool on_int64(std::int64_t, json::string_view, json::error_code&) { return pass(); }
  bool on_uint64(std::uint64_t, json::string_view, json::error_code&) { return pass(); }
  bool on_double(double, json::string_view, json::error_code&) { return pass(); }
  bool on_bool(bool, json::error_code&) { return pass(); }
  bool on_null(json::error_code&) { return pass(); }
  bool on_comment_part(json::string_view, json::error_code&) { return true; }
  bool on_comment(json::string_view, json::error_code&) { return true; }

 private:
  /// An object or array that is open, and where in it the parser stands.
  struct Level {
    std::set<std::string, std::less<>> names = {};
    std::string name = {};
    std::size_t index = 0;
  };

  bool open() {
    levels_.emplace_back();
    return true;
  }

  bool close() {
    levels_.pop_back();
    return pass();
  }

  /// Behind a value.
  bool pass() {
    if (!levels_.empty()) ++levels_.back().index;
    return true;
  }

  std::string path() const {
    std::string path = "$";
    for (const auto& level : levels_) {
      path = level.names.empty() ? elementPath(path, level.index) : memberPath(path, level.name);
    }
    return path;
  }

  Findings& findings_;
  std::string key_;
  std::vector<Level> levels_;
};

}  // namespace

void checkDuplicateKeys(std::string_view text, Findings& findings) {
  json::parse_options options;
  options.max_depth = 512;
  json::basic_parser<MemberNames> parser(options, findings);
  json::error_code ignored;
  parser.write_some(false, text.data(), text.size(), ignored);
}

}  // namespace xel::inspect
