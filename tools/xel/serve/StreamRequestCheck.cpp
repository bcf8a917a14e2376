#include "serve/StreamRequestCheck.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <map>
#include <regex>
#include <string_view>
#include <utility>

#include "xel/session/XELStreamRequest.h"

namespace xel::serve {
namespace {

using Fields = std::map<std::string, std::string, std::less<>>;

constexpr int badRequest = 400;
constexpr int unauthorized = 401;

struct Rule {
  std::string_view field;
  bool (*accepts)(const std::string& value);
  std::string_view demand;
};

bool isPresent(const std::string& value) { return !value.empty(); }

bool isCorrelator(const std::string& value) {
  std::uint32_t number = 0;
  const char* const end = value.data() + value.size();
  const auto [rest, error] = std::from_chars(value.data(), end, number);
  return error == std::errc{} && rest == end;
}

bool isFlag(const std::string& value) { return value == "0" || value == "1"; }

bool isTruth(const std::string& value) { return value == "true" || value == "false"; }

bool isUppercaseUUID(const std::string& value) {
  static const std::regex uuid("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
  return std::regex_match(value, uuid);
}

bool isIDType(const std::string& value) { return value == "tvOS"; }

bool isVersion(const std::string& value) {
  const auto slash = value.find('/');
  return value.starts_with("t.") && slash != std::string::npos && slash > 2 &&
         slash + 1 < value.size();
}

constexpr Rule commonRules[] = {
    {"correlator", isCorrelator, "must be a number of 32 bits"},
    {"url", isPresent, "must name the application"},
    {"is_lat", isFlag, "must be 0 or 1"},
    {"rdid", isUppercaseUUID, "must be a UUID in upper case"},
    {"idtype", isIDType, "must be tvOS"},
    {"sdkv", isVersion, "must be the library's version, a slash and the application"},
    {"submodel", isPresent, "must name the hardware model"},
};
constexpr Rule liveRule = {"attempt_preroll", isTruth, "must be true or false"};

bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool isPercentEncoded(std::string_view value) {
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] <= ' ' || value[i] > '~') return false;
    if (value[i] != '%') continue;
    if (i + 2 >= value.size() || !isHexDigit(value[i + 1]) || !isHexDigit(value[i + 2])) {
      return false;
    }
    i += 2;
  }
  return true;
}

bool isAdTagParameter(std::string_view field) {
  constexpr std::array known = {kXELStreamParamIU,
                                kXELStreamParamDescriptionURL,
                                kXELStreamParamCustomParameters,
                                kXELStreamParamPublisherID,
                                kXELStreamParamTFCD,
                                kXELStreamParamOrderVariant,
                                kXELStreamParamOrderType,
                                kXELStreamParamSize};
  return std::find(known.begin(), known.end(), field) != known.end() || field.starts_with("xelfw_");
}

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

/// Reads the form; answers a sentence when it is none.
std::optional<std::string> readFields(std::string_view body, Fields& fields) {
  while (!body.empty()) {
    const auto end = std::min(body.find('&'), body.size());
    const std::string_view piece = body.substr(0, end);
    body.remove_prefix(std::min(end + 1, body.size()));
    const auto equals = piece.find('=');
    if (equals == std::string_view::npos || equals == 0) {
      return "The form holds " + quoted(piece) + ", which is not a field with a value.";
    }
    const std::string_view name = piece.substr(0, equals);
    if (!fields.emplace(name, piece.substr(equals + 1)).second) {
      return "The field " + quoted(name) + " stands in the form twice.";
    }
  }
  return std::nullopt;
}

/// Takes the field out of the form; answers a sentence when it breaks the rule.
std::optional<std::string> takeField(const Rule& rule, Fields& fields) {
  const auto field = fields.extract(std::string(rule.field));
  if (!field) return "The field " + quoted(rule.field) + " is missing.";
  if (rule.accepts(field.mapped())) return std::nullopt;
  return "The field " + quoted(rule.field) + " " + std::string(rule.demand) + ", not " +
         quoted(field.mapped()) + ".";
}

std::optional<std::string> optionalFieldRefusal(const std::string& name, const std::string& value) {
  if (name != "sam_id" && !isAdTagParameter(name)) {
    return "The field " + quoted(name) + " has no place in this request.";
  }
  if (value.empty()) return "The field " + quoted(name) + " is empty.";
  if (name != "sam_id" && !isPercentEncoded(value)) {
    return "The field " + quoted(name) + " is not percent-encoded.";
  }
  return std::nullopt;
}

std::optional<std::string> bodyRefusal(StreamKind kind, std::string_view body) {
  Fields fields;
  if (auto sentence = readFields(body, fields)) return sentence;
  for (const Rule& rule : commonRules) {
    if (auto sentence = takeField(rule, fields)) return sentence;
  }
  if (kind == StreamKind::live) {
    if (auto sentence = takeField(liveRule, fields)) return sentence;
  }
  for (const auto& [name, value] : fields) {
    if (auto sentence = optionalFieldRefusal(name, value)) return sentence;
  }
  return std::nullopt;
}

bool isAuthorized(const std::string& authorization, const Credentials& credentials) {
  if (!credentials.apiKey && !credentials.authToken) return true;
  return (credentials.apiKey && authorization == "TROVDAI key=\"" + *credentials.apiKey + "\"") ||
         (credentials.authToken &&
          authorization == "TROVDAI token=\"" + *credentials.authToken + "\"");
}

bool isUserAgent(const std::string& text) {
  // Library, operating system and application, each with its version; the system's name may hold
  // blanks and slashes.
  static const std::regex shape(R"(XELtvOS/t\.[^ ]+ [^ ].*/[^ ]* [^ ]+/[^ ]*)");
  return std::regex_match(text, shape);
}

}  // namespace

std::optional<Refusal> refusalOf(const ReceivedStreamRequest& request,
                                 const Credentials& credentials) {
  if (!isAuthorized(request.authorization, credentials)) {
    return Refusal{unauthorized, request.authorization.empty()
                                     ? "The Authorization header is missing."
                                     : "The Authorization header does not fit."};
  }
  if (!isUserAgent(request.userAgent)) {
    return Refusal{badRequest, "The User-Agent header " + quoted(request.userAgent) +
                                   " does not name library, system and application."};
  }
  if (auto sentence = bodyRefusal(request.kind, request.body)) {
    return Refusal{badRequest, std::move(*sentence)};
  }
  return std::nullopt;
}

}  // namespace xel::serve
