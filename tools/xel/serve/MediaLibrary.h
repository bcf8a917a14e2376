#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace xel::serve {

/// A rendering of the media: two variants of pictures and sound, and the sound alone.
enum class Rendition { low, high, audio };

/// Such as "low".
const char* nameOf(Rendition rendition);

/// A clip of the media: the content, or one ad.
struct MediaPart {
  std::string name;
  /// Seconds; of its segments, each but the last is `segmentSeconds` long.
  double duration;
  /// What stands in its pictures, with its seconds; empty: a clock with milliseconds.
  std::string label;
  /// Presentation time of its start, in seconds.
  double clockStart;
};

using MediaProgress = std::function<void(std::size_t done, std::size_t total)>;

/// Clips cut into HLS segments, made by ffmpeg once and kept in a folder.
///
/// Pictures are H.264 without B frames at 25 a second, sound is AAC at 48 kHz. The presentation
/// clock starts anew in each part, and wraps within the content.
class MediaLibrary {
 public:
  static constexpr double segmentSeconds = 2;

  /// Makes the media in the folder, if they are not there; that takes some seconds. Other processes
  /// may do so at the same time. Throws std::runtime_error with a sentence and a remedy.
  /// @param progress is told how many parts are made, of how many, when they must be made.
  explicit MediaLibrary(const std::filesystem::path& folder, const MediaProgress& progress = {});

  static const std::vector<MediaPart>& parts();
  static const MediaPart& part(const std::string& name);
  static std::size_t segmentCount(const MediaPart& part);
  static double segmentDuration(const MediaPart& part, std::size_t index);

  /// The bytes of a segment as ffmpeg made them; for audio, the AAC frames that begin in its time.
  std::string segment(const MediaPart& part, Rendition rendition, std::size_t index) const;
  /// Seconds from the start of the part to the first frame of an audio segment.
  static double audioStart(std::size_t index);

 private:
  const std::filesystem::path folder_;
};

}  // namespace xel::serve
