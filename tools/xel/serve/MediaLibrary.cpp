#include "serve/MediaLibrary.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "serve/ChildProcess.h"
#include "serve/FileLock.h"
#include "serve/MediaRecipe.h"
#include "serve/MediaTagger.h"

namespace xel::serve {
namespace {

/// The 33-bit clock of transport streams wraps at 95443.7 s: in the content, and amid the texts of
/// an ad.
constexpr double beforeTheWrap = 95440;
constexpr double justBeforeTheWrap = 95442;

std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error(file.string() + " cannot be read; remove its folder");
  return {std::istreambuf_iterator<char>(stream), {}};
}

void makePart(const MediaPart& part, std::size_t number, const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  const auto result = runChild(mediaCommand(part, number, folder));
  if (result.status == 0) return;
  throw std::runtime_error(
      result.status == commandNotFound
          ? "the media are made by ffmpeg, which is not here; install the package ffmpeg"
          : "ffmpeg could not make the media (it needs libx264 and drawtext): " + result.errors);
}

/// Whole or not at all.
void makeAll(const std::filesystem::path& folder, const MediaProgress& progress) {
  auto unfinished = folder;
  unfinished += ".unfinished";
  std::filesystem::remove_all(unfinished);
  try {
    std::size_t number = 0;
    for (const MediaPart& part : MediaLibrary::parts()) {
      if (progress) progress(number, MediaLibrary::parts().size());
      makePart(part, number++, unfinished / part.name);
    }
    std::filesystem::rename(unfinished, folder);
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove_all(unfinished, ignored);
    throw;
  }
}

/// The first AAC frame that begins at or after a segment's start.
std::size_t firstFrame(std::size_t segment) {
  return static_cast<std::size_t>(std::ceil(
      static_cast<double>(segment) * MediaLibrary::segmentSeconds * sampleRate / samplesPerFrame));
}

}  // namespace

const char* nameOf(Rendition rendition) {
  switch (rendition) {
    case Rendition::low:
      return "low";
    case Rendition::high:
      return "high";
    case Rendition::audio:
      break;
  }
  return "audio";
}

MediaLibrary::MediaLibrary(const std::filesystem::path& folder, const MediaProgress& progress) try
    : folder_(std::filesystem::absolute(folder) / ("recipe-" + std::to_string(mediaRecipe))) {
  if (std::filesystem::exists(folder_)) return;
  std::filesystem::create_directories(folder);
  const FileLock lock(folder / "lock");
  // Another process may have made them meanwhile.
  if (!std::filesystem::exists(folder_)) makeAll(folder_, progress);
} catch (const std::system_error& error) {
  throw std::runtime_error("the media cannot be written: " + std::string(error.what()));
}

const std::vector<MediaPart>& MediaLibrary::parts() {
  static const std::vector<MediaPart> parts = {{"content", 30, "", beforeTheWrap},
                                               {"ad-1", 4, "Ad one", justBeforeTheWrap},
                                               {"ad-2", 5, "Ad two", 10},
                                               {"ad-3", 6, "Ad three", 10},
                                               {"preroll-1", 4, "Pre-roll one", 1000},
                                               {"preroll-2", 5, "Pre-roll two", 10}};
  return parts;
}

const MediaPart& MediaLibrary::part(const std::string& name) {
  return *std::find_if(parts().begin(), parts().end(),
                       [&name](const MediaPart& each) { return each.name == name; });
}

std::size_t MediaLibrary::segmentCount(const MediaPart& part) {
  return static_cast<std::size_t>(std::ceil(part.duration / segmentSeconds));
}

double MediaLibrary::segmentDuration(const MediaPart& part, std::size_t index) {
  return std::min(segmentSeconds, part.duration - static_cast<double>(index) * segmentSeconds);
}

std::string MediaLibrary::segment(const MediaPart& part, Rendition rendition,
                                  std::size_t index) const {
  const auto folder = folder_ / part.name;
  if (rendition != Rendition::audio) {
    return readFile(folder /
                    (std::string(nameOf(rendition)) + "-" + std::to_string(index) + ".ts"));
  }
  const std::string all = readFile(folder / "audio.aac");
  const bool isLast = index + 1 >= segmentCount(part);
  std::string_view rest = all;
  std::string frames;
  for (std::size_t frame = 0; isLast || frame < firstFrame(index + 1); ++frame) {
    const std::size_t size = adtsFrameSize(rest);
    if (size == 0) break;
    if (frame >= firstFrame(index)) frames += rest.substr(0, size);
    rest.remove_prefix(size);
  }
  return frames;
}

double MediaLibrary::audioStart(std::size_t index) {
  return static_cast<double>(firstFrame(index)) * samplesPerFrame / sampleRate;
}

}  // namespace xel::serve
