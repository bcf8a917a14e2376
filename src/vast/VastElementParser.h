#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Text.h"
#include "platform/XMLReader.h"
#include "vast/VastElement.h"

namespace xel {

/// What the handlers of VAST elements share: the element whose text is being read, the event that
/// its URLs are filed under, and the way back to the parent.
///
/// Results go to the parent through a callback that owns the reader but not the parent. The
/// callback drops this handler while its own end event is still running; the reader keeps it alive
/// for that event, and `finish` touches nothing of it afterwards.
template <typename... Results>
class VastElementParser : public XMLReaderDelegate {
 public:
  using ParsedCallback = std::function<void(Results...)>;

  void setParsedCallback(ParsedCallback callback) { parsedCallback_ = std::move(callback); }

  void parser_foundCDATA(XMLReader& reader, std::string_view bytes) final {
    parser_foundCharacters(reader, bytes);
  }

 protected:
  VastElementParser() = default;

  /// `other` also when no element is open, or a nested one has just closed.
  VastElement currentElement() const noexcept { return currentElement_; }
  VastElement openElement(std::string_view name) noexcept {
    return currentElement_ = vastElementNamed(name);
  }
  void closeElement() noexcept { currentElement_ = VastElement::other; }

  /// Absent when the element that tells has no "event" attribute: its URLs are then dropped.
  const std::optional<std::string>& currentTrackingEvent() const noexcept {
    return currentTrackingEvent_;
  }
  /// Sets the event when the current element holds a URL that is filed under one.
  void openURLElement(const XMLAttributes& attributes) {
    if (currentElement_ == VastElement::error) currentTrackingEvent_ = "error";
    if (currentElement_ == VastElement::impression) currentTrackingEvent_ = "start";
    if (currentElement_ == VastElement::tracking) setTrackingEvent(attributes);
  }
  void setTrackingEvent(const XMLAttributes& attributes) {
    const auto event = attributes["event"];
    currentTrackingEvent_ = event ? std::optional<std::string>(lowercased(*event)) : std::nullopt;
  }

  /// Gives the reader and the results back to the parent.
  void finish(XMLReader& reader, Results... results) {
    reader.setDelegate({});
    if (const ParsedCallback callback = std::move(parsedCallback_)) {
      callback(std::move(results)...);
    }
  }

 private:
  ParsedCallback parsedCallback_;
  VastElement currentElement_ = VastElement::other;
  std::optional<std::string> currentTrackingEvent_;
};

}  // namespace xel
