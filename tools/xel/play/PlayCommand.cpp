#include "play/PlayCommand.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"
#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/Redaction.h"
#include "xel/simulation/TraceRecorder.h"

#include "common/CommandLine.h"
#include "common/SignalWatcher.h"
#include "common/TemporaryFolder.h"
#include "play/JSONLines.h"
#include "play/KeyReader.h"
#include "play/ObservingHTTPClient.h"
#include "play/OutputFilter.h"
#include "play/PlainView.h"
#include "play/PlaySession.h"
#include "play/PlayerOptions.h"
#include "play/TerminalView.h"
#include "play/TraceFile.h"
#include "report/ReportCommand.h"

namespace xel {
namespace {

constexpr auto details =
    "Examples:\n"
    "  xel play live --asset-key news --server localhost:8443 --ca-file ca.pem --window\n"
    "  xel play vod --content-source-id shows --video-id 1 --server localhost:8443 \\\n"
    "      --ca-file ca.pem --player clock --speed max --json\n\n"
    "Keys, tokens and identifiers of the viewer are replaced in what is shown: \"redacted-1\".\n\n"
    "Keys on a terminal:\n"
    "  q quits, space pauses and resumes, left and right seek by 10 s, down and up by 60 s\n\n"
    "Exit status:\n"
    "  0    the stream ended, or --duration ran out, and every ping had its result; or q ended it\n"
    "  1    the session failed, or could not be recorded whole\n"
    "  2    wrong usage\n"
    "  130  ended by SIGINT\n"
    "  143  ended by SIGTERM";

/// What stands on the command line for a stream of either kind.
struct PlayOptions {
  DefaultPlatformOptions platform;
  PlayerOptions player;
  std::optional<std::string> apiKey;
  std::optional<std::string> authToken;
  std::optional<std::string> monitorID;
  std::optional<std::string> manifestSuffix;
  std::map<std::string, std::string> adTags;
  std::vector<double> conversions;
  bool json = false;
  std::string recordFile;
  std::string reportFile;
  bool redactURLs = false;

  void applyTo(XELStreamRequest& request) const {
    request.setApiKey(apiKey);
    request.setAuthToken(authToken);
    request.setStreamActivityMonitorID(monitorID);
    request.setManifestURLSuffix(manifestSuffix);
    request.setAdTagParameters(adTags);
  }
};

struct LiveOptions : PlayOptions {
  std::string assetKey;
  bool attemptPreroll = false;
};

struct VODOptions : PlayOptions {
  std::string contentSourceID;
  std::string videoID;
};

std::pair<std::string, std::string> adTagFrom(const std::string& text) {
  const auto equals = text.find('=');
  if (equals == std::string::npos || equals == 0) {
    refuse("--ad-tag", text, "KEY=VALUE, such as iu=/1234/news");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

std::string serverFrom(const std::string& text) {
  static const std::regex form(R"(([A-Za-z0-9._-]+|\[[0-9A-Fa-f:.]+\])(:([0-9]{1,5}))?)");
  std::smatch parts;
  if (!std::regex_match(text, parts, form) ||
      (parts[3].matched && (std::stoi(parts[3]) < 1 || std::stoi(parts[3]) > 65535))) {
    refuse("--server", text, "HOST or HOST:PORT, without https://");
  }
  return text;
}

std::string advertisingIDFrom(const std::string& text) {
  static const std::regex form("[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}");
  if (!std::regex_match(text, form)) {
    refuse("--advertising-id", text, "a UUID, such as 123e4567-e89b-12d3-a456-426614174000");
  }
  return text;
}

std::string identifierFrom(const std::string& option, const std::string& text) {
  if (text.empty()) refuse(option, text, "an identifier: it must not be empty");
  return text;
}

void addServerOptions(CLI::App& command, PlayOptions& options) {
  auto& platform = options.platform;
  addText(command, "--server", "HOST[:PORT]", "The ad server of live and on-demand streams",
          [&platform](const std::string& text) {
            platform.services.liveHost = platform.services.vodHost = serverFrom(text);
          });
  addText(command, "--ca-file", "PEM", "Trust the authorities of this file alone",
          [&platform](const std::string& text) {
            if (!std::filesystem::is_regular_file(text) || !std::ifstream(text)) {
              refuse("--ca-file", text, "a file that can be read");
            }
            platform.caFile = text;
          });
  addMeasurementDomains(command, platform.services.measurementDomains);
}

void addRequestOptions(CLI::App& command, PlayOptions& options) {
  auto& host = options.platform.host;
  command.add_option("--api-key", options.apiKey, "Key that authorises the request");
  command.add_option("--auth-token", options.authToken,
                     "Token that authorises the request, instead of the key");
  addRepeatable(command, "--ad-tag", "KEY=VALUE", "Ad targeting parameter (repeatable)",
                [&options](const std::vector<std::string>& tags) {
                  for (const auto& tag : tags) {
                    const auto [key, value] = adTagFrom(tag);
                    options.adTags[key] = value;
                  }
                });
  command.add_option("--manifest-suffix", options.manifestSuffix,
                     "Query text to end the manifest's URL with");
  command.add_option("--monitor-id", options.monitorID,
                     "Identifier in the server's stream activity monitor");
  command.add_option("--app-id", host.applicationIdentifier,
                     "Identifier of the application, such as com.example.player");
  command.add_option("--app-version", host.applicationVersion, "Version of the application");
  addText(command, "--advertising-id", "UUID", "Advertising identifier; tracking is then allowed",
          [&host](const std::string& text) {
            host.advertisingIdentifier = advertisingIDFrom(text);
            host.advertisingTrackingEnabled = true;
          });
}

void addOutputOptions(CLI::App& command, PlayOptions& options) {
  addRepeatable(command, "--convert", "TIME",
                "Convert TIME between stream and content time (repeatable)",
                [&options](const std::vector<std::string>& times) {
                  for (const auto& time : times) {
                    const auto number = finiteNumber(time);
                    if (!number) refuse("--convert", time, "a number of seconds, such as 12.5");
                    options.conversions.push_back(*number);
                  }
                });
  command.add_flag("--json", options.json, "One JSON object a line on standard output");
  command
      .add_option("--record", options.recordFile,
                  "Record the session in a trace, for xel replay and xel report; keys, tokens and\n"
                  "identifiers of the viewer are replaced")
      ->type_name("FILE");
  command.add_flag("--redact-urls", options.redactURLs,
                   "Replace the query values of all URLs in the trace or report too");
  if (canReport()) {
    command
        .add_option("--report", options.reportFile,
                    "Show the session as an HTML page when it has ended, as xel report does")
        ->type_name("PAGE");
  }
}

bool isOnTerminal() {
  const auto* terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && terminal && std::string_view(terminal) != "dumb";
}

std::shared_ptr<PlayView> makeView(bool json, OutputFilter filter) {
  if (json) return std::make_shared<JSONLines>(stdout, std::move(filter));
  if (isOnTerminal()) return std::make_shared<TerminalView>(stdout, std::move(filter));
  return std::make_shared<PlainView>(stdout, std::move(filter));
}

void handleKey(PlaySession& session, Key key) {
  switch (key) {
    case Key::q:
      return session.quit();
    case Key::space:
      return session.togglePause();
    case Key::left:
      return session.seekBy(-10);
    case Key::right:
      return session.seekBy(10);
    case Key::down:
      return session.seekBy(-60);
    case Key::up:
      return session.seekBy(60);
  }
}

/// Stops the process as SIGTSTP does where nobody watches it; returns when it is continued.
void stopProcess() {
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGTSTP);
  raise(SIGTSTP);
  pthread_sigmask(SIG_UNBLOCK, &stop, nullptr);
  pthread_sigmask(SIG_BLOCK, &stop, nullptr);
}

/// Null where the session is not to be recorded.
std::shared_ptr<simulation::TraceRecorder> makeRecorder(const PlayOptions& options,
                                                        const std::shared_ptr<TraceFile>& file) {
  if (!file) return nullptr;
  return std::make_shared<simulation::TraceRecorder>(
      [file](std::string_view line) { file->write(line); },
      simulation::TraceRecorder::Options{.redactURLs = options.redactURLs});
}

double steadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

int play(const PlayOptions& options, const std::shared_ptr<XELStreamRequest>& request) {
  checkPlayerOptions(options.player);
  options.applyTo(*request);
  const auto runLoop = StandardRunLoop::main();
  const OutputFilter filter = [redaction = std::make_shared<simulation::Redaction>(
                                   *request, *makeLinuxEnvironment(options.platform.host))](
                                  std::string_view text) { return (*redaction)(text); };
  const auto view = makeView(options.json, filter);
  const auto session =
      std::make_shared<PlaySession>(view, options.conversions, [runLoop] { runLoop->stop(); });
  std::optional<KeyReader> keys;
  // Before there are other threads.
  const SignalWatcher signals(runLoop, {SIGINT, SIGTERM, SIGWINCH, SIGTSTP, SIGCONT},
                              [&keys, view, session](int signal) {
                                switch (signal) {
                                  case SIGTSTP:
                                    if (keys) keys->suspend();
                                    view->suspend();
                                    return stopProcess();
                                  case SIGCONT:
                                    if (keys) keys->resume();
                                    return view->redraw();
                                  case SIGWINCH:
                                    return view->redraw();
                                  default:
                                    return session->abandon(128 + signal);
                                }
                              });

  auto platform = Platform::makeDefault(options.platform);
  const auto http = std::make_shared<ObservingHTTPClient>(platform.http, session, steadySeconds);
  platform.http = http;
  platform.log = filtered(view->log(), filter);
  const auto file =
      options.recordFile.empty() ? nullptr : std::make_shared<TraceFile>(options.recordFile);
  const auto recorder = makeRecorder(options, file);
  if (recorder) platform = recorder->record(std::move(platform));
  const ScopedPlatform scope(std::move(platform));

  const auto player =
      makePlayer(options.player, {http, runLoop, steadySeconds, options.platform.caFile});
  if (!player) return 1;
  if (!options.json && isOnTerminal() && isatty(STDIN_FILENO) != 0) {
    keys.emplace(STDIN_FILENO, runLoop, [session](Key key) { handleKey(*session, key); });
  }
  session->start(player, options.player.playback, http, request, recorder);
  runLoop->run();
  const bool isRecordMissing = file && !file->isWhole();
  return session->exitStatus() == 0 && isRecordMissing ? 1 : session->exitStatus();
}

/// Plays, and makes the report that is asked for.
int playAndReport(PlayOptions& options, const std::shared_ptr<XELStreamRequest>& request) {
  if (options.redactURLs && options.recordFile.empty() && options.reportFile.empty()) {
    throw CLI::ValidationError("--redact-urls", "give --record or --report too");
  }
  if (options.reportFile.empty()) return play(options, request);
  std::optional<TemporaryFolder> folder;
  if (options.recordFile.empty()) options.recordFile = folder.emplace().path() / "session.jsonl";
  const auto played = play(options, request);
  const auto reported = makeReport(options.recordFile, options.reportFile);
  return played != 0 ? played : reported;
}

void addCommonOptions(CLI::App& command, PlayOptions& options) {
  addServerOptions(command, options);
  addRequestOptions(command, options);
  addPlayerOptions(command, options.player);
  addOutputOptions(command, options);
  command.footer(details);
}

}  // namespace

void registerPlay(CLI::App& app, int& exitStatus) {
  auto* command = app.add_subcommand("play", "Play a stream and show what happens in it");
  command->require_subcommand(1);
  command->footer(details);

  auto* live = command->add_subcommand("live", "Play a live stream");
  const auto liveOptions = std::make_shared<LiveOptions>();
  addText(*live, "--asset-key", "KEY", "The stream's asset key",
          [liveOptions](const std::string& text) {
            liveOptions->assetKey = identifierFrom("--asset-key", text);
          })
      ->required();
  live->add_flag("--attempt-preroll", liveOptions->attemptPreroll, "Ask for a pre-roll");
  addCommonOptions(*live, *liveOptions);
  live->callback([liveOptions, &exitStatus] {
    const auto request = XELLiveStreamRequest::initWithAssetKey(liveOptions->assetKey);
    request->setAttemptPreroll(liveOptions->attemptPreroll);
    exitStatus = playAndReport(*liveOptions, request);
  });

  auto* vod = command->add_subcommand("vod", "Play an on-demand stream");
  const auto vodOptions = std::make_shared<VODOptions>();
  addText(*vod, "--content-source-id", "ID", "The content source",
          [vodOptions](const std::string& text) {
            vodOptions->contentSourceID = identifierFrom("--content-source-id", text);
          })
      ->required();
  addText(*vod, "--video-id", "ID", "The video within the content source",
          [vodOptions](const std::string& text) {
            vodOptions->videoID = identifierFrom("--video-id", text);
          })
      ->required();
  addCommonOptions(*vod, *vodOptions);
  vod->callback([vodOptions, &exitStatus] {
    exitStatus = playAndReport(*vodOptions, XELVODStreamRequest::initWithContentSourceID_videoID(
                                                vodOptions->contentSourceID, vodOptions->videoID));
  });
}

}  // namespace xel
