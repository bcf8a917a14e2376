// Answers to a stream request, with a suffix for the manifest's URL: the rewriting for itself, and
// the whole way through a manager to the display.

#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/support/Viewer.h"
#include "platform/Text.h"
#include "platform/URL.h"
#include "protocol/XELStreamInitResponse.h"

namespace xel::fuzz {
namespace {

using namespace simulation;

std::string_view beforeQuery(std::string_view url) { return url.substr(0, url.find('?')); }

void checkRewriting(const JSONValue& answer, const std::string& suffix) {
  constexpr auto manifestKey = XELStreamInitResponse::streamManifestKey;
  const auto request = XELLiveStreamRequest::initWithAssetKey("asset");
  request->setManifestURLSuffix(suffix);
  const JSONValue changed =
      XELStreamInitResponse::configureStreamInitResponse_withRequest(answer, request);
  const std::string manifest(answer[manifestKey].text().value_or(""));
  const std::string rewritten(changed[manifestKey].text().value_or(""));
  answer.forEachMember([&](std::string_view name, const JSONValue& member) {
    require(name == manifestKey || changed[name].serialize() == member.serialize(),
            "another member that was changed");
  });
  if (rewritten == manifest) return;
  std::string_view added = trimmed(suffix);
  if (added.starts_with('?')) added.remove_prefix(1);
  require(!added.empty() && rewritten.ends_with(added), "a suffix that is not at the end");
  require(URL::parse(manifest).has_value(), "a manifest that is no URL, but was rewritten");
  require(rewritten.starts_with(beforeQuery(manifest)), "a manifest with another base");
}

void open(const std::string& body, int status, const std::string& suffix, bool live) {
  SimulatedPlatform platform;
  Viewer viewer(platform, "v", std::make_shared<ScriptedDisplay>());
  platform.server().answer(viewer.initURL(live), {status, body});
  platform.server().answerOtherDocuments({200, StreamInfoBuilder::vod().addAd("a", 4).build()});
  viewer.request(live, suffix);
  platform.loop().advance(60);
  viewer.requireAllAnswered();
  if (const auto display = viewer.display()) {
    require(display->loads().size() <= 1, "more than one load");
    display->reportReady();
    display->play(0, 5);
  }
  viewer.letGoOf(Viewer::Held::all);
  platform.loop().advance(60);
  viewer.requireWhatIsLeft(false);
  require(platform.loop().timerCount() == 0 && platform.server().outstanding() == 0,
          "polling that goes on without a manager");
}

}  // namespace
}  // namespace xel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace xel::fuzz;
  FuzzedDataProvider input(data, size);
  const bool live = input.ConsumeBool();
  const int status = input.ConsumeIntegralInRange(0, 7) ? 200 : input.ConsumeIntegral<int>();
  const std::string suffix = input.ConsumeRandomLengthString();
  const std::string body = input.ConsumeRemainingBytesAsString();
  checkRewriting(xel::JSONValue::parse(body).value, suffix);
  open(body, status, suffix, live);
  return 0;
}
