#include "serve/ServeCommand.h"

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "xel/platform/StandardRunLoop.h"

#include "common/CommandLine.h"
#include "common/Progress.h"
#include "common/SignalWatcher.h"
#include "serve/AdServer.h"
#include "serve/GivenDocument.h"

namespace xel {
namespace {

constexpr auto description = "Serve ad-inserted streams on this machine, as an ad server would";

constexpr auto details =
    "When it is ready it prints one line: its URL, and the file with the certificate to trust.\n"
    "GET /ledger tells every request that was received, GET /documents the stream info\n"
    "documents as the players last got them.\n\n"
    "Faults:\n"
    "  ENDPOINT=KIND[:ARGUMENT][@REQUESTS], for init, document, manifest, segment or ping:\n"
    "  delay:SECONDS            the answer comes later\n"
    "  hang                     no answer comes\n"
    "  status:CODE              another status\n"
    "  reset                    the connection is reset\n"
    "  truncate[:BYTES]         the body ends early, without BYTES in its middle\n"
    "  malformed                the body makes no sense\n"
    "  wrong-type               a web page comes instead\n"
    "  oversized[:BYTES]        the body is filled up to BYTES, without them to 65 MiB\n"
    "  redirect-loop            the answer is a redirect to the same place\n"
    "  slow-drip[:BYTES]        the body comes at BYTES a second, without them at 10\n"
    "  REQUESTS counts from 1: @2 is the second request alone, @2-4 three of them, @2- all but\n"
    "  the first. GET /faults tells the faults and how often each struck; PUT /faults takes a\n"
    "  JSON array of such texts in their place.\n\n"
    "Check:\n"
    "  With --assert, the end of the server prints a line for each session and one for each ping\n"
    "  that is missing, came twice, came out of order or has an unknown URL:\n"
    "  complete   each ad of each session has been played from start to end\n"
    "  started    each ad that has started has been played to its end\n\n"
    "Examples:\n"
    "  xel serve --media ~/.cache/xel\n"
    "  xel serve --fault document=status:500@2-4 --fault ping=delay:2.5\n"
    "  xel serve --assert complete\n\n"
    "Exit status:\n"
    "  0  ended by SIGINT or SIGTERM, without a difference for --assert\n"
    "  1  it could not serve, or --assert found a difference\n"
    "  2  wrong usage";

struct ServeOptions {
  serve::AdServer::Settings server;
  std::string documentFile;
  std::string answerFile;
  std::string mediaFolder;
  std::optional<serve::Expectation> expectation;
};

int judge(serve::AdServer& server, serve::Expectation expectation) {
  const auto verdict = server.checkPings(expectation);
  for (const auto& line : verdict.sessions) std::printf("%s\n", line.c_str());
  for (const auto& line : verdict.differences) std::printf("%s\n", line.c_str());
  const auto count = verdict.differences.size();
  std::printf(count == 0   ? "no difference\n"
              : count == 1 ? "1 difference\n"
                           : "%zu differences\n",
              count);
  return count == 0 ? 0 : 1;
}

serve::GivenDocument readOption(const std::string& option, const std::string& file) {
  try {
    return serve::GivenDocument::read(file);
  } catch (const std::runtime_error& error) {
    throw CLI::ValidationError(option, error.what());
  }
}

serve::Fault faultFrom(const std::string& text) {
  try {
    return serve::Fault::parse(text);
  } catch (const std::invalid_argument& error) {
    throw CLI::ValidationError("--fault", error.what());
  }
}

serve::Expectation expectationFrom(const std::string& text) {
  if (text == "complete") return serve::Expectation::complete;
  if (text == "started") return serve::Expectation::started;
  refuse("--assert", text, "an expectation; there are complete and started");
}

void runServe(const ServeOptions& options, int& exitStatus) {
  auto settings = options.server;
  if (!options.documentFile.empty()) {
    settings.streams.document = std::make_shared<const serve::GivenDocument>(
        readOption("--document", options.documentFile));
  }
  if (!options.answerFile.empty())
    settings.streams.answer = readOption("--answer", options.answerFile);
  if (!options.mediaFolder.empty()) {
    try {
      Progress progress("making media");
      settings.streams.media = std::make_shared<const serve::MediaLibrary>(
          options.mediaFolder,
          [&progress](std::size_t done, std::size_t total) { progress.show(done, total); });
    } catch (const std::runtime_error& error) {
      throw CLI::ValidationError("--media", error.what());
    }
  }

  const auto loop = std::make_shared<StandardRunLoop>();
  const SignalWatcher signals(loop, {SIGINT, SIGTERM}, [&loop](int) { loop->stop(); });
  serve::AdServer server(std::move(settings));
  std::printf("%s %s\n", server.url().c_str(), server.caFile().c_str());
  std::fflush(stdout);
  loop->run();
  exitStatus = options.expectation ? judge(server, *options.expectation) : 0;
}

}  // namespace

void registerServe(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<ServeOptions>();
  CLI::App& command = *app.add_subcommand("serve", description);
  command.footer(details);
  auto& server = options->server;
  command.add_option("--port", server.port, "Port to listen on; 0 picks a free one")
      ->type_name("PORT")
      ->check(CLI::Range(0, 65535))
      ->default_val(8443);
  command.add_option("--api-key", server.credentials.apiKey, "Demand this API key");
  command.add_option("--auth-token", server.credentials.authToken, "Demand this token");
  command
      .add_option("--live-duration", server.streams.liveDuration,
                  "Seconds after which a live stream ends")
      ->type_name("SECONDS")
      ->check(CLI::Range(1.0, 86400.0))
      ->default_val(60);
  auto* const document =
      command
          .add_option("--document", options->documentFile,
                      "Stream info document to serve in place of generated ones (JSON);\n"
                      "\"{tracking}\" in it stands for where the session's pings go")
          ->type_name("FILE");
  command
      .add_option("--media", options->mediaFolder,
                  "Stream real media, which ffmpeg makes in this folder when it has none;\n"
                  "without it, playlists alone are served, for players without pictures")
      ->type_name("DIR")
      ->excludes(document);
  command
      .add_option("--answer", options->answerFile,
                  "Answer to every stream request in place of generated ones (JSON);\n"
                  "\"{session}\" in it stands for the session's URL")
      ->type_name("FILE");
  addRepeatable(command, "--fault", "FAULT", "Let something go wrong; see \"Faults\" (repeatable)",
                [&server](const std::vector<std::string>& texts) {
                  for (const auto& text : texts) server.faults.push_back(faultFrom(text));
                });
  addText(command, "--assert", "complete|started",
          "In the end, compare the pings with what the documents promise; see \"Check\"",
          [options](const std::string& text) { options->expectation = expectationFrom(text); });
  addMeasurementDomains(command, server.streams.measurementDomains);
  command.add_flag("--verbose", server.verbose, "Write a line for each request to standard error");
  command.callback([options, &exitStatus] { runServe(*options, exitStatus); });
}

}  // namespace xel
