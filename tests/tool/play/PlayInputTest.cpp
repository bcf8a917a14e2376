#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include "play/KeyDecoder.h"
#include "play/PlayCommand.h"

namespace xel {
namespace {

std::string keysOf(const std::vector<std::string>& pieces) {
  KeyDecoder decoder;
  std::string keys;
  for (const auto& piece : pieces) {
    for (const auto key : decoder.decode(piece)) keys += "q_<>^v"[static_cast<int>(key)];
  }
  return keys;
}

TEST(KeyDecoder, FindsTheKeysHoweverTheirBytesAreCut) {
  const struct {
    std::vector<std::string> pieces;
    std::string keys;
  } cases[] = {
      {{"q x\n\x04 Q\xC3\xA4"}, "q__q"},
      {{"\033[D\033[C\033[A\033[B", "\033OD\033OC\033OA\033OB"}, "<>^v<>^v"},
      {{"\033", "[", "C ", "\033", "OA"}, ">_^"},
      {{"\033", "q"}, "q"},
      {{"\033\033[D"}, "<"},
      {{"\033[1;5C\033[15~\033[Z\033OP\033[20", ";2~q"}, "q"},
      {{"\033[1\033[C\033[?A\033[C"}, ">>"},
  };
  for (const auto& [pieces, keys] : cases) EXPECT_EQ(keysOf(pieces), keys) << pieces[0].substr(1);
}

TEST(PlayCommand, RefusesOptionsThatDoNotGoTogether) {
  const std::pair<std::string, std::string> cases[] = {
      {"--player tape", "is not a player"},
      {"--player clock --window", "no pictures"},
      {"--player clock --speed 0", "is not a number above 0"},
      {"--seek 10", "is not AT:TO"},
#ifdef XEL_HAS_GSTREAMER
      {"--player gstreamer --speed 2", "only --player clock has another speed"},
      {"--speed max", "only --player clock has another speed"},
#else
      {"--player gstreamer", "built without GStreamer"},
#endif
  };
  for (const auto& [options, reason] : cases) {
    CLI::App app;
    int exitStatus = 0;
    registerPlay(app, exitStatus);
    try {
      app.parse("play live --asset-key a " + options);
      ADD_FAILURE() << options << " was accepted";
    } catch (const CLI::ValidationError& error) {
      EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace xel
