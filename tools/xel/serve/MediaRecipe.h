#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "serve/MediaLibrary.h"

namespace xel::serve {

/// The number of the commands below. It changes with them: media of another recipe are not used.
inline constexpr int mediaRecipe = 2;

/// The ffmpeg command that makes a part in every rendition: "low-0.ts", "high-0.ts" and so on, and
/// "audio.aac". Throws std::runtime_error when a font is missing.
/// @param number of the part, for its colour and its tone.
std::vector<std::string> mediaCommand(const MediaPart& part, std::size_t number,
                                      const std::filesystem::path& folder);

/// What a master playlist says of a rendition (RFC 8216, 4.3.4.2), such as
/// `BANDWIDTH=80000,CODECS="mp4a.40.2"`. The bandwidth is above that of each tagged segment.
std::string attributesOf(Rendition rendition);

}  // namespace xel::serve
