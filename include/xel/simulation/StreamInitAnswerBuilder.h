#pragma once

#include <optional>
#include <string>
#include <vector>

#include "xel/platform/Export.h"

namespace xel::simulation {

/// One entry of the subtitles list; an absent text is left out.
struct SubtitleTrack {
  std::optional<std::string> language = {};
  std::optional<std::string> webvtt = {};
  std::optional<std::string> ttml = {};
};

/// Writes the ad server's answer to a stream request. A plain value; an absent or empty
/// member is left out.
struct XEL_EXPORT StreamInitAnswerBuilder {
  /// A complete answer for a live stream without pre-roll; its documents are on media.example and
  /// ads.example.
  static StreamInitAnswerBuilder live();
  /// A complete answer for an on-demand stream.
  static StreamInitAnswerBuilder vod();

  std::optional<std::string> streamID = "stream-1";
  std::optional<std::string> manifest = "https://media.example/main.m3u8";
  /// "live" or "on_demand".
  std::optional<std::string> type = {};
  std::vector<SubtitleTrack> subtitles = {};
  std::optional<std::string> id3EventsURL = {};
  /// Seconds between two polls of `id3EventsURL`.
  std::optional<double> pollingFrequency = {};
  std::optional<std::string> prerollManifest = {};
  std::optional<std::string> timeEventsURL = {};

  /// The answer as JSON text.
  std::string build() const;
};

}  // namespace xel::simulation
