#include "simulation/trace/ProtocolWords.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>

namespace xel::simulation {
namespace {

/// In alphabetical order. Words with fewer letters are never replaced within texts.
constexpr std::string_view words[] = {"adsystem",
                                      "adtitle",
                                      "adview",
                                      "apiframework",
                                      "break",
                                      "breaks",
                                      "cdata",
                                      "companion",
                                      "companionads",
                                      "complete",
                                      "conversion",
                                      "creative",
                                      "creatives",
                                      "creativeview",
                                      "cuepoints",
                                      "description",
                                      "duration",
                                      "error",
                                      "event",
                                      "false",
                                      "firstquartile",
                                      "height",
                                      "http",
                                      "https",
                                      "id3_events_url",
                                      "idregistry",
                                      "idvalue",
                                      "impression",
                                      "inline",
                                      "kolpad",
                                      "language",
                                      "linear",
                                      "live",
                                      "mediafiles",
                                      "midpoint",
                                      "null",
                                      "on_demand",
                                      "oxel",
                                      "pagead",
                                      "polling_frequency",
                                      "position",
                                      "preroll_manifest",
                                      "sdkv",
                                      "sequence",
                                      "sigh",
                                      "ssss",
                                      "start",
                                      "staticresource",
                                      "stream_id",
                                      "stream_manifest",
                                      "stream_type",
                                      "subtitles",
                                      "tags",
                                      "thirdquartile",
                                      "time_events_url",
                                      "times",
                                      "tracking",
                                      "trackingevents",
                                      "true",
                                      "ttml",
                                      "txxx",
                                      "type",
                                      "universaladid",
                                      "vast",
                                      "view",
                                      "webvtt",
                                      "width",
                                      "wrapper"};

static_assert(std::is_sorted(std::begin(words), std::end(words)));

}  // namespace

bool isProtocolWord(std::string_view word) {
  std::string lower(word);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return std::binary_search(std::begin(words), std::end(words), lower);
}

}  // namespace xel::simulation
