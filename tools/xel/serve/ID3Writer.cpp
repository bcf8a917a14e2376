#include "serve/ID3Writer.h"

namespace xel::serve {
namespace {

/// A size in four bytes of seven bits each.
std::string synchsafe(std::size_t size) {
  std::string bytes;
  for (int shift = 21; shift >= 0; shift -= 7) bytes += static_cast<char>((size >> shift) & 0x7F);
  return bytes;
}

std::string frame(std::string_view id, const std::string& content) {
  return std::string(id) + synchsafe(content.size()) + std::string(2, '\0') + content;
}

}  // namespace

std::string textFrame(std::string_view text) {
  constexpr char utf8 = 3;
  return frame("TXXX", std::string(1, utf8) + '\0' + std::string(text) + '\0');
}

std::string timestampFrame(std::uint64_t ticks) {
  std::string content = "com.apple.streaming.transportStreamTimestamp";
  content += '\0';
  for (int shift = 56; shift >= 0; shift -= 8) content += static_cast<char>(ticks >> shift);
  return frame("PRIV", content);
}

std::string id3Tag(std::string_view frames) {
  return std::string("ID3\x04\0\0", 6) + synchsafe(frames.size()) + std::string(frames);
}

}  // namespace xel::serve
