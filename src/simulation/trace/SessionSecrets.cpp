#include "simulation/trace/SessionSecrets.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "simulation/trace/DecodedText.h"

namespace xel::simulation {
namespace {

// Names of ad tag parameters.
constexpr std::array<std::string_view, 6> ofTheStream = {"iu",     "description_url", "tfcd",
                                                         "dai-ov", "dai-ot",          "sz"};
constexpr std::array<std::string_view, 4> ofTheViewer = {"ppid", "cust_params", "rdid",
                                                         "gdpr_consent"};

template <std::size_t count>
bool isOneOf(std::string_view name, const std::array<std::string_view, count>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

void addSecrets(Redactor& redactor, const XELStreamRequest& request) {
  for (const auto& text :
       {request.apiKey(), request.authToken(), request.streamActivityMonitorID()}) {
    if (text) redactor.addSecret(*text);
  }
  for (const auto& [name, value] : request.adTagParameters()) {
    if (isOneOf(name, ofTheStream)) continue;
    const bool isPlain = value.find_first_of("=&") == std::string::npos;
    if (!isPlain || isOneOf(name, ofTheViewer)) redactor.addSecret(value);
    redactor.addParameters(value);
    // The host may have escaped it itself.
    const auto decoded = DecodedText::fromPercent(value);
    if (decoded.hasEscapes()) redactor.addParameters(decoded.text());
  }
  if (const auto& suffix = request.manifestURLSuffix()) {
    // By its values: of its names the client makes something.
    const auto begin = std::min(suffix->find_first_not_of(" \t\r\n?"), suffix->size());
    redactor.addParameters(std::string_view(*suffix).substr(begin));
  }
}

}  // namespace xel::simulation
