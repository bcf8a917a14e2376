#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace xel {

class XMLReader;

/// The attributes of one element, as long as its start event lasts. Names match exactly.
class XMLAttributes {
 public:
  /// @param pairs names and values in turn, ended by a null; null for none.
  explicit XMLAttributes(const unsigned char* const* pairs = nullptr) noexcept : pairs_(pairs) {}
  /// With references resolved; absent when the element has no such attribute.
  std::optional<std::string_view> operator[](std::string_view name) const noexcept;
  /// A copy of the value.
  std::optional<std::string> text(std::string_view name) const;

 private:
  const unsigned char* const* pairs_;
};

/// What an XML reader reports, in document order. A handler implements what it wants to hear.
///
/// Namespaces are not processed: the URI is empty, and both names are as written.
class XMLReaderDelegate {
 public:
  virtual ~XMLReaderDelegate() = default;
  virtual void parser_didStartElement_namespaceURI_qualifiedName_attributes(
      XMLReader&, [[maybe_unused]] std::string_view elementName,
      [[maybe_unused]] std::string_view namespaceURI,
      [[maybe_unused]] std::string_view qualifiedName, const XMLAttributes&) {}
  virtual void parser_didEndElement_namespaceURI_qualifiedName(
      XMLReader&, [[maybe_unused]] std::string_view elementName,
      [[maybe_unused]] std::string_view namespaceURI,
      [[maybe_unused]] std::string_view qualifiedName) {}
  /// A run of plain text, or one character or entity reference; white space between elements too.
  virtual void parser_foundCharacters(XMLReader&, [[maybe_unused]] std::string_view chunk) {}
  /// The bytes of one CDATA section, which may be empty.
  virtual void parser_foundCDATA(XMLReader&, [[maybe_unused]] std::string_view bytes) {}
};

/// Reads an XML document front to back and reports it to a delegate that may be replaced from
/// inside a report: the very next event goes to the new one.
///
/// A document over the limits counts as not well-formed where it goes over them. Declared entities
/// are not expanded, and nothing outside the text is ever read.
/// Ownership: a delegate is kept alive from when it is set until the event after it was replaced,
/// or until `parse` returns; so a handler may be dropped inside its own event.
class XMLReader final : public std::enable_shared_from_this<XMLReader> {
  struct Token {
    explicit Token() = default;
  };

 public:
  static constexpr std::size_t maxBytes = std::size_t{64} << 20;
  static constexpr int maxDepth = 256;
  static constexpr int maxAttributes = 256;
  /// Of all element and attribute names that differ.
  static constexpr std::size_t maxBytesOfNames = std::size_t{1} << 20;

  /// @param data UTF-8 text, which must outlive `parse`.
  static std::shared_ptr<XMLReader> initWithData(std::string_view data);
  XMLReader(Token, std::string_view data) noexcept : data_(data) {}

  /// Events are dropped while there is none, or it is gone.
  void setDelegate(const std::weak_ptr<XMLReaderDelegate>& delegate) {
    replaced_.push_back(std::move(delegate_));
    delegate_ = delegate.lock();
  }

  /// Reads the whole document before it returns. False when it is not well-formed; the events up
  /// to the first error have then been reported, but for a text that the error cuts short.
  bool parse();

 private:
  class Events;

  XMLReaderDelegate* delegateForNextEvent() noexcept;

  std::string_view data_;
  std::shared_ptr<XMLReaderDelegate> delegate_;
  /// Held until no event of theirs can be running.
  std::vector<std::shared_ptr<XMLReaderDelegate>> replaced_;
};

}  // namespace xel
