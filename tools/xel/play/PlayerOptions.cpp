#include "play/PlayerOptions.h"

#include <vector>

#include "common/CommandLine.h"
#include "play/ClockDisplay.h"
#include "play/GstStreamPlayer.h"

namespace xel {
namespace {

constexpr auto clockPlayer = "clock";
constexpr auto gstPlayer = "gstreamer";
#ifdef XEL_HAS_GSTREAMER
constexpr auto hasGStreamer = true;
constexpr auto defaultPlayer = gstPlayer;
#else
constexpr auto hasGStreamer = false;
constexpr auto defaultPlayer = clockPlayer;
#endif

std::string playerFrom(const std::string& text) {
  if (text != clockPlayer && text != gstPlayer) {
    refuse("--player", text, "a player; there are gstreamer and clock");
  }
  if (text == gstPlayer && !hasGStreamer) {
    throw CLI::ValidationError("--player",
                               "this xel was built without GStreamer; its only player is clock");
  }
  return text;
}

double secondsFrom(const std::string& option, const std::string& text) {
  const auto seconds = finiteNumber(text);
  if (!seconds || *seconds < 0)
    refuse(option, text, "a number of seconds, 0 or more, such as 12.5");
  return *seconds;
}

std::optional<double> speedFrom(const std::string& text) {
  if (text == "max") return std::nullopt;
  const auto speed = finiteNumber(text);
  if (!speed || *speed <= 0) refuse("--speed", text, "a number above 0, or max");
  return speed;
}

Seek seekFrom(const std::string& text) {
  const auto colon = text.find(':');
  const auto at = finiteNumber(text.substr(0, colon));
  const auto to = colon == std::string::npos ? std::nullopt : finiteNumber(text.substr(colon + 1));
  if (!at || !to || *at < 0 || *to < 0) {
    refuse("--seek", text, "AT:TO, both in seconds of stream time, such as 30:95.5");
  }
  return {*at, *to};
}

}  // namespace

void addPlayerOptions(CLI::App& command, PlayerOptions& options) {
  options.player = defaultPlayer;
  addText(command, "--player", "gstreamer|clock",
          std::string("gstreamer plays the stream; clock only lets a clock run over its manifest\n"
                      "(default: ") +
              defaultPlayer + ")",
          [&options](const std::string& text) { options.player = playerFrom(text); });
  command.add_flag("--window", options.hasWindow,
                   "Show the pictures and let the sound be heard (gstreamer)");
  addText(command, "--speed", "N|max", "Stream seconds for each second (clock; default 1)",
          [&options](const std::string& text) { options.speed = speedFrom(text); });
  addText(command, "--duration", "SECONDS",
          "Stream time to play, pre-roll included, jumps not (default: to the end)",
          [&options](const std::string& text) {
            options.playback.duration = secondsFrom("--duration", text);
          });
  addRepeatable(command, "--seek", "AT:TO", "Jump to TO when AT is reached (repeatable, in order)",
                [&options](const std::vector<std::string>& seeks) {
                  for (const auto& seek : seeks) options.playback.seeks.push_back(seekFrom(seek));
                });
}

void checkPlayerOptions(const PlayerOptions& options) {
  if (options.player == gstPlayer && options.speed != 1) {
    throw CLI::ValidationError("--speed", "only --player clock has another speed than 1");
  }
  if (options.player == clockPlayer && options.hasWindow) {
    throw CLI::ValidationError("--window", "--player clock has no pictures to show");
  }
}

std::shared_ptr<StreamPlayer> makePlayer(const PlayerOptions& options, const PlayerParts& parts) {
#ifdef XEL_HAS_GSTREAMER
  if (options.player == gstPlayer) {
    const auto player =
        makeGstMediaPlayer({.output = options.hasWindow ? GstOutput::automatic : GstOutput::none,
                            .caFile = parts.caFile,
                            .mainRunLoop = parts.runLoop});
    return player ? GstStreamPlayer::make(player) : nullptr;
  }
#endif
  return std::make_shared<ClockDisplay>(parts.http, parts.runLoop, parts.now, options.speed);
}

}  // namespace xel
