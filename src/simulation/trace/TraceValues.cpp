#include "simulation/trace/TraceValues.h"

#include <charconv>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/FixedEnvironment.h"

namespace xel::simulation {
namespace {

std::optional<std::string> optionalText(const JSONValue& value) {
  const auto text = value.text();
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::string textOf(const JSONValue& value) { return std::string(value.text().value_or("")); }

std::map<std::string, std::string> textsOf(const JSONValue& object) {
  std::map<std::string, std::string> texts;
  object.forEachMember([&texts](std::string_view name, const JSONValue& value) {
    texts[std::string(name)] = textOf(value);
  });
  return texts;
}

std::string bytesOf(std::string_view digits) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    unsigned char byte = 0;
    std::from_chars(digits.data() + at, digits.data() + at + 2, byte, 16);
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

}  // namespace

Services readServices(const JSONValue& services) {
  const auto domains = services["measurementDomains"].elements();
  const auto domain = [&domains](std::size_t i) {
    return i < domains.size() ? textOf(domains[i]) : std::string();
  };
  return {textOf(services["liveHost"]), textOf(services["vodHost"]), {domain(0), domain(1)}};
}

std::shared_ptr<Environment> readEnvironment(const JSONValue& environment) {
  auto facts = std::make_shared<FixedEnvironment>();
  facts->version = optionalText(environment["libraryVersion"]);
  facts->application = optionalText(environment["applicationIdentifier"]);
  facts->applicationRelease = optionalText(environment["applicationVersion"]);
  facts->system = optionalText(environment["operatingSystemName"]);
  facts->systemRelease = optionalText(environment["operatingSystemVersion"]);
  facts->model = optionalText(environment["hardwareModel"]);
  facts->advertisingID = textOf(environment["advertisingIdentifier"]);
  facts->trackingEnabled = environment["isAdvertisingTrackingEnabled"].boolean().value_or(false);
  return facts;
}

std::shared_ptr<XELStreamRequest> readRequest(const JSONValue& request) {
  std::shared_ptr<XELStreamRequest> made;
  if (request["type"].text() == "live") {
    const auto live = XELLiveStreamRequest::initWithAssetKey(textOf(request["assetKey"]));
    if (live) live->setAttemptPreroll(request["attemptPreroll"].boolean().value_or(false));
    made = live;
  } else if (request["type"].text() == "vod") {
    made = XELVODStreamRequest::initWithContentSourceID_videoID(textOf(request["contentSourceID"]),
                                                                textOf(request["videoID"]));
  }
  if (!made) return nullptr;
  made->setApiKey(optionalText(request["apiKey"]));
  made->setAuthToken(optionalText(request["authToken"]));
  made->setStreamActivityMonitorID(optionalText(request["streamActivityMonitorID"]));
  made->setAdTagParameters(textsOf(request["adTagParameters"]));
  made->setManifestURLSuffix(optionalText(request["manifestURLSuffix"]));
  return made;
}

HTTPResult readResult(const JSONValue& line) {
  HTTPResult result;
  result.error = readError(line["error"]);
  if (result.error) return result;
  result.response.status = static_cast<int>(line["status"].integer().value_or(0));
  for (const JSONValue& header : line["headers"].elements()) {
    const auto parts = header.elements();
    if (parts.size() == 2) result.response.headers.push_back({textOf(parts[0]), textOf(parts[1])});
  }
  const auto bytes = line["bodyHex"].text();
  result.response.body = bytes ? bytesOf(*bytes) : textOf(line["body"]);
  return result;
}

std::shared_ptr<const Error> readError(const JSONValue& error) {
  if (!error.isObject()) return nullptr;
  return std::make_shared<const Error>(
      Error{textOf(error["domain"]), error["code"].integer().value_or(0),
            textOf(error["description"]), readError(error["underlying"])});
}

TimedMetadata readMetadata(const JSONValue& metadata) {
  auto texts = textsOf(metadata);
  return {std::make_move_iterator(texts.begin()), std::make_move_iterator(texts.end())};
}

}  // namespace xel::simulation
