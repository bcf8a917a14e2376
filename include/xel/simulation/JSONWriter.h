#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xel/model/XELAd.h"
#include "xel/model/XELAdBreakInfo.h"
#include "xel/model/XELCuepoint.h"
#include "xel/platform/Error.h"
#include "xel/platform/Export.h"
#include "xel/platform/JSONValue.h"

namespace xel::simulation {

/// Writes JSON text on one line: what happens in a session, for programs.
///
/// Numbers read back exactly; what is not a number in JSON is null, and so is an object that is
/// not there. Each byte that is not part of UTF-8 becomes U+FFFD. The caller keeps the order:
/// a name before each value of an object.
///
///     JSONWriter line;
///     line.beginObject().member("t", 12.5).member("ad", ad).endObject();
///     std::puts(line.text().c_str());
class XEL_EXPORT JSONWriter {
 public:
  enum class TextKind {
    any,
    url,  ///< A URL, or what a document has in a URL's place.
  };
  /// Gives what is to be written in place of a text.
  using TextFilter = std::function<std::string(std::string_view text, TextKind kind)>;

  JSONWriter() = default;
  /// @param filter is asked for every text, names in maps and documents included; a member's stays.
  explicit JSONWriter(TextFilter filter) : filter_(std::move(filter)) {}

  /// What has been written so far.
  const std::string& text() const noexcept { return text_; }

  JSONWriter& beginObject() { return begin('{'); }
  JSONWriter& endObject() { return end('}'); }
  JSONWriter& beginArray() { return begin('['); }
  JSONWriter& endArray() { return end(']'); }
  JSONWriter& name(std::string_view name);
  template <typename Value>
  JSONWriter& member(std::string_view memberName, const Value& memberValue) {
    return name(memberName).value(memberValue);
  }

  /// A text that the filter is not asked for, being the format's own.
  JSONWriter& keyword(std::string_view text);
  JSONWriter& value(std::string_view text) { return write(text, TextKind::any); }
  JSONWriter& value(const std::string& text) { return value(std::string_view(text)); }
  JSONWriter& value(const char* text) { return value(std::string_view(text)); }
  JSONWriter& url(std::string_view text) { return write(text, TextKind::url); }
  JSONWriter& url(const std::string& text) { return url(std::string_view(text)); }
  JSONWriter& url(const std::optional<std::string>& text) {
    return text ? url(std::string_view(*text)) : value(nullptr);
  }
  JSONWriter& value(double number);
  JSONWriter& value(std::integral auto number) { return raw(std::to_string(number)); }
  JSONWriter& value(bool flag) { return raw(flag ? "true" : "false"); }
  JSONWriter& value(std::nullptr_t) { return raw("null"); }
  JSONWriter& value(const JSONValue& json);
  JSONWriter& value(const Error& error);
  JSONWriter& value(const XELCuepoint& cuepoint);
  JSONWriter& value(const XELAdBreakInfo& info);
  JSONWriter& value(const XELCreative& creative);
  JSONWriter& value(const XELCompanion& companion);
  /// Whole: with its break, creatives and companions.
  JSONWriter& value(const XELAd& ad);
  template <typename Value>
  JSONWriter& value(const std::shared_ptr<Value>& object) {
    return object ? value(*object) : value(nullptr);
  }
  template <typename Value>
  JSONWriter& value(const std::optional<Value>& optional) {
    return optional ? value(*optional) : value(nullptr);
  }
  template <typename Value>
  JSONWriter& value(const std::vector<Value>& values) {
    beginArray();
    for (const auto& each : values) value(each);
    return endArray();
  }
  JSONWriter& value(const TrackingURLs& trackingURLs);
  template <typename Value, typename Less>
  JSONWriter& value(const std::map<std::string, Value, Less>& values) {
    beginObject();
    for (const auto& [key, keyValue] : values) member(filtered(key), keyValue);
    return endObject();
  }

 private:
  JSONWriter& begin(char bracket);
  JSONWriter& end(char bracket);
  JSONWriter& write(std::string_view text, TextKind kind);
  std::string filtered(std::string_view text, TextKind kind = TextKind::any) const {
    return filter_ ? filter_(text, kind) : std::string(text);
  }
  JSONWriter& raw(std::string_view json);
  void separate();
  void quote(std::string_view text);

  const TextFilter filter_;
  std::string text_;
};

}  // namespace xel::simulation
