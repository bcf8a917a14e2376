#include "play/KeyDecoder.h"

#include <optional>

namespace xel {
namespace {

constexpr char escape = '\033';

std::optional<Key> plainKey(char byte) {
  if (byte == 'q' || byte == 'Q') return Key::q;
  if (byte == ' ') return Key::space;
  return std::nullopt;
}

std::optional<Key> arrowKey(char lastByte) {
  switch (lastByte) {
    case 'A':
      return Key::up;
    case 'B':
      return Key::down;
    case 'C':
      return Key::right;
    case 'D':
      return Key::left;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::vector<Key> KeyDecoder::decode(std::string_view bytes) {
  std::vector<Key> keys;
  for (const auto byte : bytes) {
    std::optional<Key> key;
    if (byte == escape) {
      state_ = State::escape;
    } else if (state_ == State::escape && (byte == '[' || byte == 'O')) {
      state_ = byte == '[' ? State::control : State::shift;
      hasParameters_ = false;
    } else if (state_ == State::control && byte >= 0x20 && byte < 0x40) {
      hasParameters_ = true;
    } else if (state_ == State::control || state_ == State::shift) {
      state_ = State::plain;
      if (!hasParameters_) key = arrowKey(byte);
    } else {
      // After the escape key by itself, too: nothing tells that from the beginning of a sequence.
      state_ = State::plain;
      key = plainKey(byte);
    }
    if (key) keys.push_back(*key);
  }
  return keys;
}

}  // namespace xel
