#include "serve/MediaRecipe.h"

#include <sstream>
#include <stdexcept>

namespace xel::serve {
namespace {

struct Variant {
  Rendition rendition;
  int width;
  int height;
  int kilobits;
  /// Bits a second.
  int bandwidth;
};

constexpr Variant variants[] = {{Rendition::low, 320, 180, 200, 440'000},
                                {Rendition::high, 640, 360, 700, 1'250'000}};
constexpr int audioBandwidth = 80'000;

/// Without B frames decoding and presentation times are the same; each GOP is a segment. Level 3.0
/// is the "1e" of the variants' codec.
constexpr const char* encoding =
    "-c:v libx264 -preset veryfast -profile:v baseline -level 3.0 -pix_fmt yuv420p -bf 0 -g 50 "
    "-keyint_min 50 -sc_threshold 0 -c:a aac -b:a 64k -ac 2";
constexpr const char* muxing =
    "-muxdelay 0 -muxpreload 0 -f hls -hls_time 2 -hls_list_size 0 -hls_segment_filename";

std::string fontFile() {
  for (const char* file : {"/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
                           "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
                           "/usr/share/fonts/TTF/DejaVuSans-Bold.ttf",
                           "/usr/share/fonts/dejavu-sans-fonts/DejaVuSans-Bold.ttf"}) {
    if (std::filesystem::exists(file)) return file;
  }
  throw std::runtime_error(
      "the media need the DejaVu fonts; install the package "
      "fonts-dejavu-core");
}

std::string pictureSource(const MediaPart& part, std::size_t number) {
  static const std::vector<std::string> colours = {"0x803020", "0x206040", "0x303080",
                                                   "0x705010", "0x602060", "0x305060"};
  const std::string shape = "size=640x360:rate=25:duration=" + std::to_string(part.duration);
  return part.label.empty() ? "testsrc2=" + shape
                            : "color=c=" + colours[number % colours.size()] + ":" + shape;
}

/// The pictures of a part, with its label or a running clock burnt in.
std::string pictureFilter(const MediaPart& part) {
  const std::string text =
      part.label.empty() ? R"(%{pts\:hms})" : part.label + R"( %{eif\:t+1\:d}s)";
  return "[0:v]drawtext=fontfile=" + fontFile() + ":text='" + text +
         "':fontsize=h/7:fontcolor=white:box=1:boxcolor=black@0.6:boxborderw=12:"
         "x=(w-tw)/2:y=(h-th)/2,split=2[high][wide];[wide]scale=320:180[low]";
}

class Command {
 public:
  /// Each word of the text is one of the command.
  Command& words(const std::string& text) {
    std::istringstream stream(text);
    for (std::string word; stream >> word;) words_.push_back(word);
    return *this;
  }
  Command& word(std::string text) {
    words_.push_back(std::move(text));
    return *this;
  }
  std::vector<std::string> take() { return std::move(words_); }

 private:
  std::vector<std::string> words_;
};

}  // namespace

std::vector<std::string> mediaCommand(const MediaPart& part, std::size_t number,
                                      const std::filesystem::path& folder) {
  const std::string tone =
      "sine=sample_rate=48000:frequency=" + std::to_string(330 + 110 * number) +
      ":duration=" + std::to_string(part.duration);
  Command command;
  command.words("ffmpeg -v error -nostdin -y -f lavfi -i").word(pictureSource(part, number));
  command.words("-f lavfi -i").word(tone).word("-filter_complex").word(pictureFilter(part));
  for (const Variant& variant : variants) {
    const std::string name = nameOf(variant.rendition);
    const std::string rate = std::to_string(variant.kilobits) + "k";
    command.words("-map [" + name + "] -map 1:a").words(encoding);
    for (const char* option : {"-b:v", "-maxrate", "-bufsize"}) command.word(option).word(rate);
    command.words("-output_ts_offset " + std::to_string(part.clockStart)).words(muxing);
    command.word(folder / (name + "-%d.ts")).word(folder / (name + ".m3u8"));
  }
  command.words("-map 1:a -c:a aac -b:a 64k -ac 2 -f adts").word(folder / "audio.aac");
  return command.take();
}

std::string attributesOf(Rendition rendition) {
  for (const Variant& variant : variants) {
    if (variant.rendition != rendition) continue;
    return "BANDWIDTH=" + std::to_string(variant.bandwidth) +
           ",RESOLUTION=" + std::to_string(variant.width) + "x" + std::to_string(variant.height) +
           R"(,CODECS="avc1.42c01e,mp4a.40.2")";
  }
  return "BANDWIDTH=" + std::to_string(audioBandwidth) + R"(,CODECS="mp4a.40.2")";
}

}  // namespace xel::serve
