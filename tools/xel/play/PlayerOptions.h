#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "xel/platform/HTTPClient.h"
#include "xel/platform/RunLoop.h"

#include "play/Playback.h"
#include "play/StreamPlayer.h"

namespace xel {

/// What stands on the command line about the player.
struct PlayerOptions {
  /// "clock" or "gstreamer".
  std::string player;
  /// Absent: as fast as possible. For the clock only.
  std::optional<double> speed = 1;
  /// For GStreamer only.
  bool hasWindow = false;
  PlaybackSettings playback;
};

/// Describes the options of the player, which `options` is filled from.
void addPlayerOptions(CLI::App& command, PlayerOptions& options);

/// Throws `CLI::ValidationError` where the options do not go together.
void checkPlayerOptions(const PlayerOptions& options);

/// What a player is made with beside its options.
struct PlayerParts {
  std::shared_ptr<HTTPClient> http;
  std::shared_ptr<RunLoop> runLoop;
  /// Seconds of a steady clock.
  std::function<double()> now;
  /// A PEM file of the authorities to trust; empty: the system's.
  std::string caFile;
};

/// Null, with a line in the log, when the player cannot be made on this system.
std::shared_ptr<StreamPlayer> makePlayer(const PlayerOptions& options, const PlayerParts& parts);

}  // namespace xel
