// VAST documents: whatever the bytes, the ads found in a document that was cut short are the first
// ones of the whole document, and all that they carry is UTF-8.

#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "xel/simulation/JSONWriter.h"

#include "fuzz/support/Require.h"
#include "platform/Text.h"
#include "vast/XELVastParser.h"

namespace {

using xel::fuzz::require;

std::vector<std::string> adsOf(std::string_view vast) {
  std::vector<std::string> ads;
  for (const auto& ad : XELVastParser::init()->parseVastDocument(vast)) {
    // Sees every text before JSON would mend it.
    xel::simulation::JSONWriter line([](std::string_view text, auto) {
      require(xel::isUTF8(text), "a text that is not UTF-8");
      return std::string(text);
    });
    ads.push_back(line.value(ad).text());
    require(xel::JSONValue::parse(ads.back()).value.isObject(), "an ad that JSON cannot carry");
  }
  return ads;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto cut = input.ConsumeIntegral<std::uint16_t>();
  const std::string vast = input.ConsumeRemainingBytesAsString();
  const auto whole = adsOf(vast);
  const auto first = adsOf(std::string_view(vast).substr(0, cut));
  require(first.size() <= whole.size() && std::equal(first.begin(), first.end(), whole.begin()),
          "ads that are not there once more bytes follow");
  return 0;
}
