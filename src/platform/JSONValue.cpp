#include "xel/platform/JSONValue.h"

#include <charconv>
#include <cmath>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <boost/json/value_stack.hpp>

#include "platform/JSONMemory.h"

namespace json = boost::json;

namespace xel {
namespace {

constexpr std::size_t maxDepth = 512;

/// Everything that one parse allocated; the handles share it.
struct Document {
  explicit Document(std::size_t bytesOfText) : memory(bytesOfText) {}
  JSONMemory memory;
  json::value root = json::value(json::storage_ptr(&memory));
};

const json::value& valueAt(const std::shared_ptr<const void>& node) noexcept {
  return *static_cast<const json::value*>(node.get());
}

/// Builds values from the parser's events. Differs from the library's own handler in numbers: their
/// text is read again, since the parser rounds about one long decimal in seven wrongly.
class ValueBuilder {
 public:
  static constexpr std::size_t max_object_size = json::object::max_size();
  static constexpr std::size_t max_array_size = json::array::max_size();
  static constexpr std::size_t max_key_size = json::string::max_size();
  static constexpr std::size_t max_string_size = json::string::max_size();

  explicit ValueBuilder(json::storage_ptr memory) { stack.reset(std::move(memory)); }

  bool on_document_begin(json::error_code&) { return true; }
  bool on_document_end(json::error_code&) { return true; }
  bool on_object_begin(json::error_code&) { return true; }
  bool on_object_end(std::size_t size, json::error_code&) {
    stack.push_object(size);
    return true;
  }
  bool on_array_begin(json::error_code&) { return true; }
  bool on_array_end(std::size_t size, json::error_code&) {
    stack.push_array(size);
    return true;
  }
  bool on_key_part(json::string_view text, std::size_t, json::error_code&) {
    stack.push_chars(text);
    return true;
  }
  bool on_key(json::string_view text, std::size_t, json::error_code&) {
    stack.push_key(text);
    return true;
  }
  bool on_string_part(json::string_view text, std::size_t, json::error_code&) {
    stack.push_chars(text);
    return true;
  }
  bool on_string(json::string_view text, std::size_t, json::error_code&) {
    stack.push_string(text);
    return true;
  }
  bool on_number_part(json::string_view, json::error_code&) { return true; }
  bool on_int64(std::int64_t value, json::string_view, json::error_code&) {
    stack.push_int64(value);
    return true;
  }
  bool on_uint64(std::uint64_t value, json::string_view, json::error_code&) {
    stack.push_uint64(value);
    return true;
  }
  bool on_double(double approximate, json::string_view text, json::error_code&) {
    double exact = approximate;
    std::from_chars(text.data(), text.data() + text.size(), exact);
    // Nothing that is not finite could be written as JSON again.
    if (std::isfinite(exact)) {
      stack.push_double(exact);
    } else {
      stack.push_null();
    }
    return true;
  }
  bool on_bool(bool value, json::error_code&) {
    stack.push_bool(value);
    return true;
  }
  bool on_null(json::error_code&) {
    stack.push_null();
    return true;
  }
  bool on_comment_part(json::string_view, json::error_code&) { return true; }
  bool on_comment(json::string_view, json::error_code&) { return true; }

  json::value_stack stack;
};

JSONValue::ParseResult failure(JSONError code, std::string description) {
  return {{},
          std::make_shared<const Error>(Error{std::string(jsonErrorDomain), static_cast<int>(code),
                                              std::move(description), nullptr})};
}

JSONValue::ParseResult failure(const json::error_code& error, std::size_t offset) {
  if (error == json::error::incomplete) {
    return failure(JSONError::incomplete, "The JSON text ends too early.");
  }
  if (error == json::error::too_deep) {
    return failure(JSONError::tooDeep, "The JSON text is nested deeper than 512 levels.");
  }
  return failure(JSONError::syntax,
                 "Not JSON at byte " + std::to_string(offset) + ": " + error.message() + ".");
}

}  // namespace

JSONValue::ParseResult JSONValue::parse(std::string_view text) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());

  auto document = std::make_shared<Document>(text.size());
  json::parse_options options;
  options.max_depth = maxDepth;
  json::basic_parser<ValueBuilder> parser(options, &document->memory);
  json::error_code error;
  const std::size_t read = parser.write_some(false, text.data(), text.size(), error);
  if (!error && read < text.size()) error = json::error::extra_data;
  if (error) return failure(error, read);

  document->root = parser.handler().stack.release();
  if (!document->root.is_structured()) {
    return failure(JSONError::bareScalar, "The JSON text is neither an object nor an array.");
  }
  const json::value* root = &document->root;
  return {JSONValue(std::shared_ptr<const void>(std::move(document), root)), nullptr};
}

bool JSONValue::isObject() const noexcept { return node_ && valueAt(node_).is_object(); }

JSONValue JSONValue::operator[](std::string_view name) const noexcept {
  if (!isObject()) return {};
  const json::value* member = valueAt(node_).get_object().if_contains(name);
  return member ? JSONValue(std::shared_ptr<const void>(node_, member)) : JSONValue();
}

bool JSONValue::has(std::string_view name) const noexcept {
  return isObject() && valueAt(node_).get_object().contains(name);
}

std::optional<std::string_view> JSONValue::text() const noexcept {
  if (!node_ || !valueAt(node_).is_string()) return std::nullopt;
  const json::string& text = valueAt(node_).get_string();
  return std::string_view(text.data(), text.size());
}

std::optional<std::int64_t> JSONValue::integer() const noexcept {
  if (!node_) return std::nullopt;
  if (const std::int64_t* value = valueAt(node_).if_int64()) return *value;
  const double* value = valueAt(node_).if_double();
  // Both bounds are powers of two and so exact.
  if (value && *value >= -0x1p63 && *value < 0x1p63) return static_cast<std::int64_t>(*value);
  return std::nullopt;
}

std::optional<double> JSONValue::number() const noexcept {
  if (!node_) return std::nullopt;
  const json::value& value = valueAt(node_);
  if (const std::int64_t* whole = value.if_int64()) return static_cast<double>(*whole);
  if (const std::uint64_t* whole = value.if_uint64()) return static_cast<double>(*whole);
  if (const double* fraction = value.if_double()) return *fraction;
  return std::nullopt;
}

std::optional<bool> JSONValue::boolean() const noexcept {
  if (!node_ || !valueAt(node_).is_bool()) return std::nullopt;
  return valueAt(node_).get_bool();
}

std::vector<JSONValue> JSONValue::elements() const {
  std::vector<JSONValue> elements;
  if (!node_ || !valueAt(node_).is_array()) return elements;
  const json::array& array = valueAt(node_).get_array();
  elements.reserve(array.size());
  for (const json::value& element : array) {
    elements.push_back(JSONValue(std::shared_ptr<const void>(node_, &element)));
  }
  return elements;
}

void JSONValue::forEachMember(
    const std::function<void(std::string_view name, const JSONValue& value)>& visit) const {
  if (!isObject()) return;
  const std::shared_ptr<const void> keepAlive = node_;
  for (const json::key_value_pair& member : valueAt(keepAlive).get_object()) {
    visit(std::string_view(member.key().data(), member.key().size()),
          JSONValue(std::shared_ptr<const void>(keepAlive, &member.value())));
  }
}

JSONValue JSONValue::withMember(std::string_view name, std::string_view text) const {
  if (!isObject()) return {};
  constexpr std::size_t usualAnswer = std::size_t{16} << 10;
  auto document = std::make_shared<Document>(usualAnswer + text.size());
  document->root = valueAt(node_);
  document->root.get_object()[name] = text;
  const json::value* root = &document->root;
  return JSONValue(std::shared_ptr<const void>(std::move(document), root));
}

std::string JSONValue::serialize() const {
  return node_ ? json::serialize(valueAt(node_)) : "null";
}

}  // namespace xel
