#pragma once

#include <string_view>
#include <vector>

namespace xel {

/// The keys that `xel play` knows.
enum class Key { q, space, left, right, up, down };

/// Reads keys out of what a terminal sends, which may be cut anywhere. Other keys, with whatever
/// sequences they send, are passed over.
class KeyDecoder {
 public:
  /// The keys that are complete with these bytes.
  std::vector<Key> decode(std::string_view bytes);

 private:
  /// Inside an escape sequence, how it began; `shift` is "ESC O", `control` is "ESC [".
  enum class State { plain, escape, shift, control };

  State state_ = State::plain;
  bool hasParameters_ = false;
};

}  // namespace xel
