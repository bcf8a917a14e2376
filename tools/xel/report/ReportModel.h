#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "inspect/RuleTable.h"

namespace xel::report {

// What a report shows of one recorded session: plain data, in the order in
// which it happened.
//
// `time` is seconds since the recording began; `position` is seconds of stream
// time, absent before the player's first report. An index is one into the list
// of that name in `Report`.

struct Moment {
  double time = 0;
  std::optional<double> position = {};
};

/// What became of a tracking ping.
enum class PingOutcome { accepted, failed, unanswered };

struct Ping {
  double time = 0;
  std::optional<double> position;
  std::string event;
  std::optional<std::size_t> ad;
  std::string url;
  PingOutcome outcome = PingOutcome::unanswered;
  std::optional<std::int64_t> status;
  /// Why there is no answer.
  std::string error;
  std::optional<double> milliseconds;
};

enum class AdOutcome { completed, cutOff, notStarted };

/// An ad that started, or one of the documents' that did not.
struct Ad {
  std::string key;
  std::optional<std::string> id = {};
  std::optional<std::string> title = {};
  std::optional<std::string> system = {};
  std::optional<std::size_t> adBreak = {};
  std::string breakKey = {};
  /// 1-based place in the break; -1 when the stream does not say.
  std::int64_t place = -1;
  double duration = 0;
  /// When it started and ended; absent for one that did not start.
  std::optional<double> start = {};
  std::optional<double> end = {};
  std::optional<double> position = {};
  AdOutcome outcome = AdOutcome::cutOff;
  /// What kept it from starting or completing.
  std::string why = {};
  /// Whether that is no fault: a seek, say, or the end of watching.
  bool isExpected = false;
  /// The events that were reported, such as "midpoint".
  std::vector<std::string> reached = {};
  /// Pings of the events that were not reported.
  std::size_t pingsNotSent = 0;
};

struct Break {
  std::string key;
  double start = 0;
  double end = 0;
  std::optional<double> position;
  /// As the stream says; -1 when it does not.
  std::int64_t totalAds = -1;
  double duration = 0;
};

/// One stream that was loaded: a live session's pre-roll, or the content with
/// its breaks.
struct Stream {
  bool isPreroll = false;
  std::string url;
  double start = 0;
  double end = 0;
};

/// A stretch of playback without a jump: (time, position), left out where it is
/// straight.
using PlayheadPath = std::vector<std::pair<double, double>>;

struct Jump {
  double time = 0;
  double from = 0;
  double to = 0;
  /// Whether the viewer asked for it; else the stream's time jumped.
  bool isSeek = true;
};

struct Pause {
  double start = 0;
  double end = 0;
};

/// A delegate call, what the player did, or a document that was fetched.
struct Event {
  enum class Row { ads, player, documents };
  double time = 0;
  std::optional<double> position;
  Row row = Row::ads;
  std::string name;
  std::string detail;
  std::optional<std::size_t> ad;
  bool isFailure = false;
  /// How long a fetch took.
  std::optional<double> milliseconds;
};

using inspect::Severity;

/// Something that was lost: what and why, how often, and where for the first
/// time.
struct Loss {
  Severity severity = Severity::error;
  std::string what;
  std::string why;
  std::size_t count = 1;
  std::optional<double> time = {};
  std::optional<double> position = {};
};

/// A finding about a document or an answer of the session.
struct Finding {
  Severity severity = Severity::note;
  std::string rule;
  std::string document;
  std::string place;
  std::string text;
  std::string remedy;
};

/// What else a session's request or environment says, to be shown by name.
struct Fact {
  std::string name;
  std::string value;
};

struct Session {
  std::string library;
  std::string recorded;
  bool isLive = false;
  /// The stream as the request names it.
  std::string stream;
  std::optional<std::string> streamID;
  std::vector<Fact> facts;
  double duration = 0;
  std::optional<std::int64_t> exitStatus;
  /// Whether the recording has its end; else it was cut off.
  bool isWhole = false;
};

/// How exactly the stream's metadata led to events.
struct MetadataFigures {
  /// On demand: events that were reported, and how far behind their second they
  /// came, in seconds.
  std::size_t events = 0;
  double worst = 0;
  double sum = 0;
  /// Live: texts that were delivered, and those that no document knew.
  std::size_t texts = 0;
  std::size_t unknownTexts = 0;
};

struct Report {
  Session session;
  /// From the stream request to the first frame, in seconds; absent when none
  /// was shown.
  std::optional<double> startUp;
  MetadataFigures metadata;
  std::size_t missedSegments = 0;
  std::vector<Stream> streams;
  std::vector<PlayheadPath> playhead;
  std::vector<Jump> jumps;
  std::vector<Pause> pauses;
  std::vector<Break> breaks;
  std::vector<Ad> ads;
  std::vector<Event> events;
  std::vector<Ping> pings;
  std::vector<Loss> losses;
  std::vector<Finding> findings;
};

/// One sentence on the pings, such as "3 of 81 pings failed, 1 got no answer."
std::string pingStatement(const Report& report);

}  // namespace xel::report
