#include "xel/simulation/TraceReader.h"

#include <algorithm>
#include <array>
#include <exception>
#include <istream>
#include <string_view>
#include <utility>

namespace xel::simulation {
namespace {

constexpr std::size_t chunkBytes = std::size_t{64} << 10;

enum class Type { any, text, integer, object };

struct Member {
  std::string_view kind;
  std::string_view name;
  Type type;
};

/// What a line of a kind cannot do without. Numbers that JSON does not have are null.
constexpr std::array<Member, 15> neededMembers = {{
    {"httpRequest", "id", Type::integer},
    {"httpRequest", "method", Type::text},
    {"httpRequest", "url", Type::text},
    {"httpResult", "id", Type::integer},
    {"loadURL", "url", Type::text},
    {"progress", "time", Type::any},
    {"metadata", "metadata", Type::object},
    {"failure", "error", Type::any},
    {"timerSet", "id", Type::integer},
    {"timerSet", "seconds", Type::any},
    {"timerCancel", "id", Type::integer},
    {"timerFire", "id", Type::integer},
    {"delegate", "call", Type::text},
    {"log", "line", Type::text},
    {"seek", "to", Type::any},
}};

bool hasMember(const JSONValue& line, const Member& member) {
  const JSONValue value = line[member.name];
  switch (member.type) {
    case Type::text:
      return value.text().has_value();
    case Type::integer:
      return value.integer().has_value();
    case Type::object:
      return value.isObject();
    case Type::any:
      break;
  }
  return static_cast<bool>(value);
}

/// The member that the line lacks; empty when it is whole.
std::string_view missingMember(const JSONValue& line, std::string_view kind) {
  for (const Member& member : neededMembers) {
    if (member.kind == kind && !hasMember(line, member)) return member.name;
  }
  const bool hasOutcome = line["status"].integer() || line["error"].isObject();
  return kind == "httpResult" && !hasOutcome ? "status" : "";
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r") == std::string_view::npos;
}

}  // namespace

std::string TraceFault::text(std::string_view name) const {
  std::string text(name);
  if (line > 0) text += ", line " + std::to_string(line) + ',';
  return text + ' ' + description;
}

TraceReader::TraceReader(std::istream& in) : in_(in) {
  try {
    readHeader();
  } catch (const std::exception&) {
    fail("takes more memory than there is");
  }
}

std::optional<TraceLine> TraceReader::next() {
  if (fault_) return std::nullopt;
  try {
    return readNext();
  } catch (const std::exception&) {
    fail("takes more memory than there is");
    return std::nullopt;
  }
}

void TraceReader::readHeader() {
  const Line line = readLine();
  if (fault_) return;
  if (line == Line::none) {
    return fail("is empty; a trace begins with a line about the session, so record it again");
  }
  const auto parsed = JSONValue::parse(text_);
  const auto version = parsed.value["version"].integer();
  if (parsed.value["trace"].text() != "xel" || !version) {
    return fail(
        "does not begin a trace, which is {\"trace\":\"xel\",\"version\":1,...}; give a file that "
        "was "
        "recorded");
  }
  if (*version != traceVersion) {
    return fail("is a trace of version " + std::to_string(*version) + "; only version " +
                std::to_string(traceVersion) + " is known here, so use the xel that recorded it");
  }
  const JSONValue& request = parsed.value["request"];
  const auto type = request["type"].text();
  if (request.isObject() && type != "live" && type != "vod") {
    return fail("has a \"request\" whose \"type\" is neither \"live\" nor \"vod\"");
  }
  header_ = parsed.value;
}

std::optional<TraceLine> TraceReader::readNext() {
  const Line line = readLine();
  if (fault_ || line == Line::none) return std::nullopt;
  auto parsed = JSONValue::parse(text_);
  if (parsed.error && line == Line::unended) {
    isCutOff_ = true;
    return std::nullopt;
  }
  TraceLine read{lineNumber_, 0, {}, std::move(parsed.value)};
  const auto time = read.value["t"].number();
  const auto kind = read.value["kind"].text();
  if (parsed.error) {
    fail("is broken: " + parsed.error->description + " Delete it, or record the session again");
  } else if (!time || !kind) {
    fail("has no \"t\" and \"kind\"; delete it, or record the session again");
  } else if (const auto missing = missingMember(read.value, *kind); !missing.empty()) {
    fail("is of kind \"" + std::string(*kind) + "\" but has no valid \"" + std::string(missing) +
         "\"; delete it, or record the session again");
  } else {
    read.time = *time;
    read.kind = *kind;
    return read;
  }
  return std::nullopt;
}

/// Fills `text_`, without the line's end.
TraceReader::Line TraceReader::readLine() {
  for (;;) {
    text_.clear();
    ++lineNumber_;
    bool isComplete = false;
    while (!isComplete) {
      if (chunkUsed_ == chunk_.size()) {
        chunk_.resize(chunkBytes);
        in_.read(chunk_.data(), static_cast<std::streamsize>(chunk_.size()));
        chunk_.resize(static_cast<std::size_t>(in_.gcount()));
        chunkUsed_ = 0;
        if (in_.bad()) fail("could not be read");
        if (chunk_.empty() || fault_) break;
      }
      const auto begin = chunk_.begin() + static_cast<std::ptrdiff_t>(chunkUsed_);
      const auto end = std::find(begin, chunk_.end(), '\n');
      isComplete = end != chunk_.end();
      text_.append(begin, end);
      chunkUsed_ = static_cast<std::size_t>(end - chunk_.begin()) + (isComplete ? 1 : 0);
      if (text_.size() > maxLineBytes) {
        fail("is longer than " + std::to_string(maxLineBytes >> 20) +
             " MiB, which no line of a trace is");
        break;
      }
    }
    if (!fault_ && isComplete && isBlank(text_)) continue;
    if (isComplete) return Line::complete;
    if (!isBlank(text_)) return Line::unended;
    --lineNumber_;
    return Line::none;
  }
}

void TraceReader::fail(std::string description) {
  fault_ = TraceFault{lineNumber_, std::move(description)};
}

}  // namespace xel::simulation
