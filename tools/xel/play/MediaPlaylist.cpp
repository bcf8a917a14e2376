#include "play/MediaPlaylist.h"

#include <charconv>
#include <optional>
#include <utility>

namespace xel {
namespace {

/// Beyond this a number in a playlist is taken for an error: about thirty years.
constexpr double longestSeconds = 1e9;

std::string_view takeLine(std::string_view& rest) {
  const auto lineEnd = rest.find('\n');
  auto line = rest.substr(0, lineEnd);
  rest.remove_prefix(lineEnd == std::string_view::npos ? rest.size() : lineEnd + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// What follows `tag` in `line`; absent when the line begins otherwise.
std::optional<std::string_view> valueOf(std::string_view tag, std::string_view line) {
  if (!line.starts_with(tag)) return std::nullopt;
  return line.substr(tag.size());
}

template <typename Number>
std::optional<Number> numberFrom(std::string_view text) {
  text = trimmed(text);
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<double> secondsFrom(std::string_view text) {
  const auto seconds = numberFrom<double>(text);
  // Written so that "nan" fails too.
  if (!seconds || !(*seconds >= 0 && *seconds <= longestSeconds)) return std::nullopt;
  return seconds;
}

std::optional<TimedText> timedTextFrom(std::string_view value) {
  const auto comma = value.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto offset = secondsFrom(value.substr(0, comma));
  if (!offset) return std::nullopt;
  return TimedText{*offset, std::string(value.substr(comma + 1))};
}

PlaylistFault faultInLine(std::size_t number, std::string_view what) {
  return {"line " + std::to_string(number) + " " + std::string(what)};
}

}  // namespace

std::variant<MediaPlaylist, MasterPlaylist, PlaylistFault> parsePlaylist(std::string_view text) {
  if (trimmed(takeLine(text)) != "#EXTM3U") return PlaylistFault{"it does not begin with #EXTM3U"};

  MediaPlaylist playlist;
  MediaSegment segment;
  bool hasDuration = false;
  bool isMaster = false;
  for (std::size_t number = 2; !text.empty(); ++number) {
    const auto line = takeLine(text);
    if (const auto value = valueOf("#XEL-TXXX:", line)) {
      if (auto timedText = timedTextFrom(*value)) segment.texts.push_back(std::move(*timedText));
    } else if (const auto info = valueOf("#EXTINF:", line)) {
      const auto duration = secondsFrom(info->substr(0, info->find(',')));
      if (!duration) return faultInLine(number, "has no duration that can be read");
      segment.duration = *duration;
      hasDuration = true;
    } else if (const auto target = valueOf("#EXT-X-TARGETDURATION:", line)) {
      const auto seconds = secondsFrom(*target);
      if (!seconds) return faultInLine(number, "has no target duration that can be read");
      playlist.targetDuration = *seconds;
    } else if (const auto sequence = valueOf("#EXT-X-MEDIA-SEQUENCE:", line)) {
      const auto first = numberFrom<std::uint64_t>(*sequence);
      if (!first) return faultInLine(number, "has no media sequence number that can be read");
      playlist.mediaSequence = *first;
    } else if (trimmed(line) == "#EXT-X-ENDLIST") {
      playlist.isFinished = true;
    } else if (line.starts_with("#EXT-X-STREAM-INF:")) {
      isMaster = true;
    } else if (!trimmed(line).empty() && !line.starts_with('#')) {
      if (isMaster) return MasterPlaylist{std::string(trimmed(line))};
      if (std::exchange(hasDuration, false)) {
        playlist.segments.push_back(std::exchange(segment, {}));
      }
    }
  }
  if (isMaster) return PlaylistFault{"it names no variant stream"};
  if (!playlist.isFinished && playlist.targetDuration <= 0) {
    return PlaylistFault{"it has neither an end nor a target duration"};
  }
  return playlist;
}

}  // namespace xel
