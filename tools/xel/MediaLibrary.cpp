#include "MediaLibrary.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "ChildProcess.h"
#include "MediaTagger.h"

namespace xel::serve {
namespace {

/// Of the recipe below: a folder that was made by another one is not used.
constexpr const char* recipe = "1";
/// The 33-bit clock of transport streams wraps at 95443.7 s.
constexpr double beforeTheWrap = 95440;

std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error(file.string() + " cannot be read; remove its folder");
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string fontFile() {
  for (const char* file : {"/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
                           "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
                           "/usr/share/fonts/TTF/DejaVuSans-Bold.ttf",
                           "/usr/share/fonts/dejavu-sans-fonts/DejaVuSans-Bold.ttf"}) {
    if (std::filesystem::exists(file)) return file;
  }
  throw std::runtime_error("the test media need the DejaVu fonts; install fonts-dejavu-core");
}

/// The pictures of a part, with its label or a running clock burnt in.
std::string pictureFilter(const MediaPart& part) {
  const std::string text =
      part.label.empty() ? R"(%{pts\:hms})" : part.label + R"( %{eif\:t+1\:d}s)";
  const std::string draw = "drawtext=fontfile=" + fontFile() + ":text='" + text +
                           "':fontsize=h/7:fontcolor=white:box=1:boxcolor=black@0.6:boxborderw=12:"
                           "x=(w-tw)/2:y=(h-th)/2";
  return "[0:v]" + draw + ",split=2[high][wide];[wide]scale=320:180[low]";
}

std::string pictureSource(const MediaPart& part, std::size_t number) {
  static const std::vector<std::string> colours = {"0x803020", "0x206040", "0x303080", "0x705010"};
  const std::string shape = "size=640x360:rate=25:duration=" + std::to_string(part.duration);
  return part.label.empty() ? "testsrc2=" + shape
                            : "color=c=" + colours[number % colours.size()] + ":" + shape;
}

/// All renditions of one part. ffmpeg's own transport stream and segment muxers do the cutting.
std::vector<std::string> command(const MediaPart& part, std::size_t number,
                                 const std::filesystem::path& folder) {
  const std::string tone =
      "sine=sample_rate=48000:frequency=" + std::to_string(330 + 110 * number) +
      ":duration=" + std::to_string(part.duration);
  std::vector<std::string> words = {"ffmpeg",
                                    "-v",
                                    "error",
                                    "-nostdin",
                                    "-y",
                                    "-f",
                                    "lavfi",
                                    "-i",
                                    pictureSource(part, number),
                                    "-f",
                                    "lavfi",
                                    "-i",
                                    tone,
                                    "-filter_complex",
                                    pictureFilter(part)};
  const auto add = [&words](std::initializer_list<std::string> more) {
    words.insert(words.end(), more);
  };
  for (const auto& [name, rate] : {std::pair("low", "200k"), std::pair("high", "800k")}) {
    add({"-map",
         std::string("[") + name + "]",
         "-map",
         "1:a",
         "-c:v",
         "libx264",
         "-preset",
         "veryfast",
         "-profile:v",
         "baseline",
         "-pix_fmt",
         "yuv420p",
         "-bf",
         "0",
         "-g",
         "50",
         "-keyint_min",
         "50",
         "-sc_threshold",
         "0",
         "-b:v",
         rate,
         "-c:a",
         "aac",
         "-b:a",
         "64k",
         "-ac",
         "2",
         "-output_ts_offset",
         std::to_string(part.clockStart),
         "-muxdelay",
         "0",
         "-muxpreload",
         "0",
         "-f",
         "hls",
         "-hls_time",
         "2",
         "-hls_list_size",
         "0",
         "-hls_segment_filename",
         folder / (std::string(name) + "-%d.ts"),
         folder / (std::string(name) + ".m3u8")});
  }
  add({"-map", "1:a", "-c:a", "aac", "-b:a", "64k", "-ac", "2", "-f", "adts",
       folder / "audio.aac"});
  return words;
}

void makePart(const MediaPart& part, std::size_t number, const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  const auto result = runChild(command(part, number, folder));
  if (result.status == 0) return;
  throw std::runtime_error(
      result.status == commandNotFound
          ? "the test media are made by ffmpeg, which is not here; install ffmpeg"
          : "ffmpeg could not make the test media in " + folder.string() + ": " + result.errors);
}

/// Whole or not at all, also when two processes make the same folder.
void makeAll(const std::filesystem::path& folder) {
  auto made = folder;
  made += "." + std::to_string(processID());
  std::filesystem::remove_all(made);
  std::size_t number = 0;
  for (const MediaPart& part : MediaLibrary::parts()) makePart(part, number++, made / part.name);
  std::ofstream(made / "recipe") << recipe;
  std::error_code taken;
  std::filesystem::rename(made, folder, taken);
  if (taken) std::filesystem::remove_all(made);
}

bool isMade(const std::filesystem::path& folder) {
  std::ifstream stamp(folder / "recipe");
  std::string text;
  return stamp >> text && text == recipe;
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

MediaLibrary::MediaLibrary(std::filesystem::path folder) : folder_(std::move(folder)) {
  try {
    folder_ = std::filesystem::absolute(folder_) / ("recipe-" + std::string(recipe));
    if (isMade(folder_)) return;
    makeAll(folder_);
  } catch (const std::filesystem::filesystem_error& error) {
    throw std::runtime_error("the test media cannot be written: " + std::string(error.what()));
  }
  if (!isMade(folder_)) throw std::runtime_error(folder_.string() + " is incomplete; remove it");
}

const std::vector<MediaPart>& MediaLibrary::parts() {
  static const std::vector<MediaPart> parts = {{"content", 30, "", beforeTheWrap},
                                               {"ad-1", 4, "Ad one", 10},
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
