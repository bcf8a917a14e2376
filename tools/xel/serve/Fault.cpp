#include "serve/Fault.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "common/CommandLine.h"

namespace xel::serve {
namespace {

using Kind = Fault::Kind;

enum class Argument { none, optional, required };

struct EndpointRow {
  std::string_view name;
  Endpoint endpoint;
};

struct KindRow {
  std::string_view name;
  Kind kind;
  Argument argument;
  double smallest;
  double largest;
  bool isWhole;
  std::string_view takes;
};

constexpr double most = 1e9;
/// What the library takes of a body.
constexpr double longestBody = 64.0 * 1024 * 1024;

constexpr std::array<EndpointRow, 5> endpoints = {{{"init", Endpoint::init},
                                                   {"document", Endpoint::document},
                                                   {"manifest", Endpoint::manifest},
                                                   {"segment", Endpoint::segment},
                                                   {"ping", Endpoint::ping}}};

constexpr std::array<KindRow, 10> kinds = {{
    {"delay", Kind::delay, Argument::required, 0, 3600, false,
     "seconds up to 3600, such as delay:2.5"},
    {"hang", Kind::hang, Argument::none, 0, 0, false, "no argument"},
    {"status", Kind::status, Argument::required, 200, 599, true,
     "a code from 200 to 599, such as status:503"},
    {"reset", Kind::reset, Argument::none, 0, 0, false, "no argument"},
    {"truncate", Kind::truncate, Argument::optional, 0, most, true,
     "the bytes that come, such as truncate:100"},
    {"malformed", Kind::malformed, Argument::none, 0, 0, false, "no argument"},
    {"wrong-type", Kind::wrongType, Argument::none, 0, 0, false, "no argument"},
    {"oversized", Kind::oversized, Argument::optional, 1, most, true,
     "the bytes of the body, such as oversized:100000000"},
    {"redirect-loop", Kind::redirectLoop, Argument::none, 0, 0, false, "no argument"},
    {"slow-drip", Kind::slowDrip, Argument::optional, 1, most, true,
     "bytes a second, such as slow-drip:100"},
}};

template <typename Rows>
const auto* rowNamed(const Rows& rows, std::string_view name) {
  const auto row = std::find_if(rows.begin(), rows.end(),
                                [name](const auto& each) { return each.name == name; });
  return row == rows.end() ? nullptr : &*row;
}

template <typename Rows>
std::string namesOf(const Rows& rows) {
  std::string names;
  for (const auto& row : rows) {
    if (!names.empty()) names += &row == &rows.back() ? " or " : ", ";
    names += row.name;
  }
  return names;
}

[[noreturn]] void refuseFault(const std::string& text, const std::string& problem) {
  throw std::invalid_argument("\"" + text + "\" " + problem);
}

/// A whole number from 1; absent where it is none.
std::optional<std::size_t> countFrom(std::string_view text) {
  std::size_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  const bool isWhole = error == std::errc{} && end == text.data() + text.size();
  return isWhole && count > 0 ? std::optional(count) : std::nullopt;
}

/// Reads "2", "2-4" or "2-".
void readRequests(std::string_view requests, Fault& fault) {
  const auto dash = requests.find('-');
  const auto first = countFrom(requests.substr(0, dash));
  auto last = first;
  if (dash != std::string_view::npos) {
    last = dash + 1 == requests.size() ? fault.last : countFrom(requests.substr(dash + 1));
  }
  if (!first || !last || *first > *last) {
    refuseFault(fault.text, "does not end with the requests that are meant: @2, @2-4 or @2-");
  }
  fault.first = *first;
  fault.last = *last;
}

void readArgument(const KindRow& row, const std::optional<std::string_view>& argument,
                  Fault& fault) {
  if (!argument && row.argument != Argument::required) return;
  const auto number = argument ? finiteNumber(*argument) : std::nullopt;
  const bool isGood = row.argument != Argument::none && number && *number >= row.smallest &&
                      *number <= row.largest &&
                      (!row.isWhole || *number == static_cast<double>(static_cast<long>(*number)));
  if (!isGood) {
    refuseFault(fault.text,
                "is not right: " + std::string(row.name) + " takes " + std::string(row.takes));
  }
  fault.argument = *number;
}

}  // namespace

Fault Fault::parse(const std::string& text) {
  const std::string_view whole = text;
  const auto equals = whole.find('=');
  if (equals == std::string_view::npos) {
    refuseFault(text, "is not ENDPOINT=KIND, such as document=status:500");
  }
  const auto* endpointRow = rowNamed(endpoints, whole.substr(0, equals));
  if (!endpointRow) refuseFault(text, "names no endpoint; give " + namesOf(endpoints));

  auto rest = whole.substr(equals + 1);
  std::optional<std::string_view> requests;
  if (const auto at = rest.find('@'); at != std::string_view::npos) {
    requests = rest.substr(at + 1);
    rest = rest.substr(0, at);
  }
  std::optional<std::string_view> argument;
  if (const auto colon = rest.find(':'); colon != std::string_view::npos) {
    argument = rest.substr(colon + 1);
    rest = rest.substr(0, colon);
  }
  const auto* kindRow = rowNamed(kinds, rest);
  if (!kindRow) refuseFault(text, "names no kind of fault; give " + namesOf(kinds));

  Fault fault{.endpoint = endpointRow->endpoint, .kind = kindRow->kind, .text = text};
  readArgument(*kindRow, argument, fault);
  if (requests) readRequests(*requests, fault);
  return fault;
}

bool Fault::losesAnswer() const noexcept {
  switch (kind) {
    case Kind::delay:
    case Kind::slowDrip:
      return false;
    case Kind::oversized:
      return argument < 0 || argument > longestBody;
    default:
      return true;
  }
}

}  // namespace xel::serve
