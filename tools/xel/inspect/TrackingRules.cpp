#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

bool isKnownEvent(std::string_view event) {
  constexpr auto known = std::to_array<std::string_view>({"acceptinvitation",
                                                          "acceptinvitationlinear",
                                                          "adcollapse",
                                                          "adexpand",
                                                          "close",
                                                          "closelinear",
                                                          "collapse",
                                                          "complete",
                                                          "creativeview",
                                                          "error",
                                                          "exitfullscreen",
                                                          "expand",
                                                          "firstquartile",
                                                          "fullscreen",
                                                          "interactivestart",
                                                          "loaded",
                                                          "midpoint",
                                                          "minimize",
                                                          "mute",
                                                          "notused",
                                                          "otheradinteraction",
                                                          "overlayviewduration",
                                                          "pause",
                                                          "playercollapse",
                                                          "playerexpand",
                                                          "progress",
                                                          "resume",
                                                          "rewind",
                                                          "skip",
                                                          "start",
                                                          "thirdquartile",
                                                          "timespentviewing",
                                                          "unmute",
                                                          "verificationnotexecuted"});
  return std::binary_search(known.begin(), known.end(), event);
}

/// The query parameters that a measurement URL loses when it is sent.
std::vector<std::string> droppedParameters(const std::string& url) {
  std::vector<std::string> dropped;
  const auto query = url.find('?');
  if (query == std::string::npos) return dropped;
  std::map<std::string, std::string> earlier;
  for (auto begin = query + 1; begin <= url.find('#');) {
    const auto end = std::min(url.find_first_of("&#", begin), url.size());
    const auto parameter = url.substr(begin, end - begin);
    const auto equals = parameter.find('=');
    if (equals == std::string::npos || equals != parameter.rfind('=')) {
      if (!parameter.empty()) dropped.push_back(quoted(parameter));
    } else {
      const auto [entry, isNew] = earlier.emplace(parameter.substr(0, equals), parameter);
      if (!isNew) dropped.push_back(quoted(std::exchange(entry->second, parameter)));
    }
    if (end == url.size() || url[end] == '#') break;
    begin = end + 1;
  }
  return dropped;
}

/// The length of the bracket that a text begins with, as it is or escaped; 0 where it begins with
/// none.
std::size_t bracketLength(std::string_view text, char bracket, std::string_view escaped) {
  if (text.starts_with(bracket)) return 1;
  const bool isEscaped = text.size() >= escaped.size() && text.starts_with(escaped.substr(0, 2)) &&
                         (text[2] | 0x20) == escaped[2];
  return isEscaped ? escaped.size() : 0;
}

/// The first macro of a URL that is still to be filled, such as "[CACHEBUSTER]"; empty when there
/// is none.
std::string macroIn(std::string_view url) {
  constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  constexpr std::string_view others = "0123456789_:.-";
  const auto isIn = [](std::string_view set, char c) { return set.find(c) != set.npos; };
  for (std::size_t begin = 0; begin < url.size(); ++begin) {
    const auto opening = bracketLength(url.substr(begin), '[', "%5b");
    if (opening == 0) continue;
    auto end = begin + opening;
    if (end == url.size() || !isIn(letters, url[end])) continue;
    while (end < url.size() && (isIn(letters, url[end]) || isIn(others, url[end]))) ++end;
    const auto closing = bracketLength(url.substr(end), ']', "%5d");
    if (closing == 0 || url.substr(end + closing).starts_with('=')) continue;
    return std::string(url.substr(begin, end + closing - begin));
  }
  return {};
}

class TrackingChecker {
 public:
  TrackingChecker(const VastOutline& vast, const AdView& view, const std::string& path,
                  Findings& findings)
      : vast_(vast), view_(view), path_(path), findings_(findings) {}

  void check() {
    if (vast_.ads().empty()) return;
    for (std::size_t i = 0; i < vast_.elements().size(); ++i) {
      if (vast_.isOfFirstAd(i) && isTrackingElement(vast_.elements()[i])) checkElement(i);
    }
    for (const auto event : pingedEvents) checkSent(std::string(event));
    if (neverSent_.empty()) return;
    std::vector<std::string> events;
    for (const auto& [event, count] : neverSent_) {
      events.push_back(event + " (" + std::to_string(count) + ")");
    }
    add("tracking-never-sent", firstNeverSent_,
        "The ad has tracking that the client never sends: " + listed(events) + ".");
  }

 private:
  void add(RuleID rule, const XMLPlace& place, std::string text) {
    findings_.add(rule, path_, place, std::move(text));
  }

  void checkElement(std::size_t index) {
    const auto& element = vast_.elements()[index];
    const auto& context = vast_.contextOf(index);
    if (context.region == VastRegion::companions) return keep("companion tracking", element);
    const auto event = vast_.eventOf(index);
    if (context.region == VastRegion::creatives && !context.linear) {
      add("tracking-outside-linear", element.place,
          nameOf(element) + " stands in a creative outside Linear and is dropped.");
    } else if (!event) {
      add("tracking-without-event", element.place,
          "This Tracking element names no event and is dropped.");
    } else if (!isKnownEvent(*event)) {
      add("tracking-unknown-event", element.place,
          "No event is named " + quoted(*event) + ", so this ping is never sent.");
    } else if (!isPingedEvent(*event)) {
      keep(*event, element);
    } else {
      checkFiled(index, *event);
    }
  }

  static std::string nameOf(const XMLElement& element) {
    const auto event = element.attribute("event");
    return event ? element.name + ' ' + quoted(*event) : element.name;
  }

  void keep(const std::string& event, const XMLElement& element) {
    if (neverSent_.empty()) firstNeverSent_ = element.place;
    ++neverSent_[event];
  }

  void checkFiled(std::size_t index, const std::string& event) {
    const auto& element = vast_.elements()[index];
    if (const auto around = foreignParent(index); !around.empty()) {
      add("tracking-in-extension", element.place,
          nameOf(element) + " stands in " + around + " and is pinged with the ad's " + event + ".");
    }
    for (const auto& piece : element.pieces) {
      if (!piece.isBehindElement || piece.isBlank()) continue;
      add("ping-behind-element", piece.place,
          "The text " + quoted(piece.text) + " stands behind a nested element of " +
              nameOf(element) + " and is dropped.");
    }
    const auto [blank, filled, last] = element.directPieces();
    if (blank > 0) {
      add("ping-white-space", element.place,
          nameOf(element) + " files " + counted(blank, "ping") + " of white space for " + event +
              (blank == 1 ? ", which fails." : ", which fail."));
    }
    if (filled > 1) {
      add("ping-pieces", element.place,
          "The URL of " + nameOf(element) + " is split into " + std::to_string(filled) +
              " pieces, which are pinged one by one; the URL as a whole is never sent.");
    }
    if (!last) {
      add("ping-without-url", element.place,
          nameOf(element) + " holds no URL, so nothing is pinged.");
    }
  }

  std::string foreignParent(std::size_t index) const {
    for (auto at = vast_.elements()[index].parent; at; at = vast_.elements()[*at].parent) {
      const auto& name = vast_.elements()[*at].name;
      if (name.ends_with("Extensions") || name == "AdVerifications") return name;
    }
    return {};
  }

  /// Compares what is filed for an event with what the library sent.
  void checkSent(const std::string& event) {
    std::vector<const PingView*> sent;
    for (const auto& ping : view_.pings) {
      if (ping.event == event) sent.push_back(&ping);
    }
    const auto filed = vast_.pingsOf(event);
    if (filed.size() != sent.size()) return;
    std::set<std::string> urls;
    for (std::size_t i = 0; i < filed.size(); ++i) {
      if (isWholeURL(filed[i])) checkPing(filed[i], *sent[i], urls.insert(sent[i]->url).second);
    }
  }

  static bool isWholeURL(const FiledURL& url) {
    return !url.piece->isBlank() && url.element->directPieces().filled == 1;
  }

  void checkPing(const FiledURL& filed, const PingView& sent, bool isFirst) {
    const auto& where = filed.piece->place;
    if (sent.refusal) {
      add("ping-refused", where,
          "The ping for " + filed.event + " is never sent: " + quoted(sent.url) + " is refused. " +
              *sent.refusal);
    }
    if (const auto macro = macroIn(sent.url); !macro.empty()) {
      add("ping-unfilled-macro", where,
          "The ping for " + filed.event + " goes out with " + macro + " in its URL.");
    }
    if (!isFirst) {
      add("ping-twice", where,
          "The URL " + quoted(sent.url) + " is pinged once more for " + filed.event + ".");
    }
    constexpr std::string_view added = "ssss=oxel";
    const bool isMeasurement = sent.url.find(added) != std::string::npos &&
                               filed.piece->text.find(added) == std::string::npos;
    const auto dropped = droppedParameters(filed.piece->text);
    if (isMeasurement && !dropped.empty()) {
      add("ping-parameter-dropped", where,
          "The measurement ping for " + filed.event + " goes out without " + listed(dropped) + ".");
    }
  }

  const VastOutline& vast_;
  const AdView& view_;
  const std::string& path_;
  Findings& findings_;
  std::map<std::string, std::size_t> neverSent_;
  XMLPlace firstNeverSent_;
};

}  // namespace

void checkTracking(const VastOutline& vast, const AdView& view, const std::string& path,
                   Findings& findings) {
  TrackingChecker(vast, view, path, findings).check();
}

}  // namespace xel::inspect
