#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace xel::serve {

/// A frame with a text of the author's own, without a description. UTF-8.
std::string textFrame(std::string_view text);
/// A frame that tells the presentation time of what follows, in ticks of 90 kHz (RFC 8216, 3.4).
std::string timestampFrame(std::uint64_t ticks);
/// An ID3v2.4 tag that holds the frames.
std::string id3Tag(std::string_view frames);

}  // namespace xel::serve
