#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace xel::inspect {

enum class Severity {
  error,    ///< Something is lost for certain.
  warning,  ///< Likely not what was meant.
  note,     ///< Worth knowing.
};

struct Rule {
  std::string_view id;
  Severity severity;
  std::string_view summary;
  std::string_view remedy;
};

/// Every rule, in the order of docs/rules.md, which shows each with an example.
inline constexpr auto ruleTable = std::to_array<Rule>({
    // Any JSON document.
    {"wrong-type", Severity::error,
     "A value of the wrong type, or a number that does not fit, counts as missing.",
     "Write the value with the type that is named."},
    {"duplicate-key", Severity::error,
     "Of members with the same name in one object only the last counts.",
     "Give each member a name of its own."},
    {"number-fraction", Severity::warning,
     "A position or count with a fraction is cut off to the whole number.",
     "Write a whole number."},

    // The answer to a stream request.
    {"answer-incomplete", Severity::error,
     "Without \"stream_id\" and \"stream_manifest\" no session begins.",
     "Answer with both members."},
    {"answer-stream-type", Severity::error,
     "A stream type other than \"live\" and \"on_demand\" ends the session with an error.",
     "Write \"stream_type\": \"live\" or \"on_demand\"."},
    {"answer-without-document", Severity::error,
     "Without the URL of its stream info document a stream plays without ad events and pings.",
     "Give live streams \"id3_events_url\" and on-demand streams \"time_events_url\"."},
    {"answer-url", Severity::error, "A URL that the HTTP client refuses is never fetched.",
     "Write an absolute http or https URL, with every character escaped that needs it."},
    {"answer-manifest-url", Severity::warning,
     "A manifest that is no absolute http or https URL reaches the player as it is, and takes no "
     "suffix.",
     "Write an absolute http or https URL, with every character escaped that needs it."},
    {"answer-unused-member", Severity::warning,
     "A member that streams of this type do not read has no effect.",
     "Remove the member, or correct \"stream_type\"."},
    {"polling-frequency", Severity::warning,
     "A polling frequency that is not above 0 counts as 10 seconds.",
     "Write the seconds between two polls, or leave the member out."},
    {"subtitle-without-location", Severity::warning,
     "A subtitle track with neither \"webvtt\" nor \"ttml\" gives the player nothing to load.",
     "Give the track the URL of one of its forms."},

    // Ads and breaks.
    {"ad-without-vast", Severity::error,
     "An ad without VAST never starts: no delegate call, no ping.",
     "Put the ad's VAST document into \"vast\"."},
    {"ad-never-starts", Severity::error,
     "An ad that no second or tag starts is never played back to the host, and nothing is pinged.",
     "Add an event of type \"start\" that names the ad."},
    {"ad-without-duration", Severity::error,
     "An ad without a duration above 0 is over one second after its start; later events are lost.",
     "Write the ad's duration in seconds."},
    {"ad-without-position", Severity::warning,
     "An ad without a position from 1 up does not begin its break, and one without any ends it.",
     "Number the ads of a break from 1."},
    {"position-repeated", Severity::warning,
     "Ads at one position of a break do not count as each other's predecessors.",
     "Number the ads of a break 1, 2, 3 and so on."},
    {"break-without-first", Severity::error,
     "A break that has no ad at position 1 begins without its delegate call.",
     "Number the ads of a break from 1."},
    {"break-count", Severity::warning,
     "A break whose count disagrees with its ads ends too early, or only by overrun.",
     "Write the number of the break's ads into \"ads\"."},
    {"break-unknown", Severity::error,
     "A break that is not described has no duration, and is over one second after it began.",
     "Describe the break under \"breaks\", with \"ads\" and \"duration\"."},
    {"break-without-duration", Severity::error,
     "A break without a duration above 0 is over one second after it began; later events are lost.",
     "Write the break's duration in seconds."},
    {"break-too-short", Severity::error,
     "A break that is more than a second shorter than its ads ends before they are through.",
     "Write the sum of the ads' durations into the break's \"duration\"."},
    {"break-empty", Severity::note, "A break that no ad names has no effect.",
     "Remove the break, or name it in the \"break\" of its ads."},

    // Events.
    {"event-incomplete", Severity::error,
     "A second's event or a tag without \"type\" or without \"ad\" is ignored.",
     "Write both members."},
    {"event-unknown-ad", Severity::error,
     "An event of an ad that is not in the document is ignored; a start also ends the current ad.",
     "Name an ad by its key under \"ads\"."},
    {"event-unknown-type", Severity::warning,
     "Of events only start, the quartiles, midpoint and complete are known; others are ignored.",
     "Use \"start\", \"firstquartile\", \"midpoint\", \"thirdquartile\" or \"complete\"."},
    {"event-missing", Severity::error,
     "An event that no second or tag reports is neither told to the host nor pinged.",
     "Report each of the ad's five events."},
    {"event-lost", Severity::error,
     "A quartile or complete counts only while its ad is the current one.",
     "Place the event between the ad's start and its end."},
    {"event-out-of-order", Severity::warning,
     "Quartiles are reported and pinged in the order of their seconds, whatever that is.",
     "Place first quartile, midpoint, third quartile and complete in this order."},
    {"event-after-end", Severity::warning,
     "An event after the end of its ad comes late, and a second later it would be lost.",
     "Place the event before the ad's start plus its duration."},
    {"start-repeated", Severity::warning,
     "An ad starts once in a session; a later start of the same ad is ignored.",
     "Give each appearance of an ad a key of its own."},
    {"event-repeated", Severity::warning,
     "A quartile or complete that is reported twice is told to the host and pinged twice.",
     "Report each event of an ad once."},
    {"second-malformed", Severity::error,
     "A second that is not a whole number without padding, sign or fraction is never looked up.",
     "Write the second as in \"12\"."},
    {"tag-white-space", Severity::warning,
     "A tag with white space around it matches only metadata with the very same white space.",
     "Remove the white space from the tag."},
    {"both-tags-and-times", Severity::warning,
     "Live streams read only \"tags\", on-demand streams only \"times\" and \"cuepoints\".",
     "Keep what the stream's type reads."},

    // Cue points.
    {"cuepoint-incomplete", Severity::error,
     "A cue point without \"start\" or \"end\" is left out.", "Write both members."},
    {"cuepoint-inverted", Severity::error,
     "A cue point that ends before it starts makes every time conversion give 0.",
     "Write an end that is not before the start."},
    {"cuepoint-overlap", Severity::warning,
     "Where cue points overlap, content time is taken off twice and the first one is the break.",
     "Let each cue point start at or after the end of the one before."},
    {"cuepoint-fraction", Severity::warning,
     "A cue point that starts at a fraction of a second is never marked played.",
     "Let cue points start at whole seconds."},
    {"cuepoint-without-start", Severity::warning,
     "A cue point in whose first second no ad starts is never marked played.",
     "Let the break's first ad start in the second at which the cue point starts."},
    {"ad-outside-cuepoints", Severity::warning,
     "An ad that starts in no cue point has break index -1 and time offset 0.",
     "Give the break a cue point that holds the ad's start."},

    // VAST documents and ads.
    {"vast-not-utf8", Severity::error,
     "A VAST document that is not UTF-8 is not well-formed, whatever encoding it declares.",
     "Convert the document to UTF-8."},
    {"vast-ends-early", Severity::error,
     "VAST that is not well-formed is read up to its first error; an ad still open there is lost.",
     "Make the document well-formed XML."},
    {"vast-broken-behind-ad", Severity::warning,
     "VAST that breaks behind its first ad keeps that ad; the rest is lost.",
     "Make the document well-formed XML."},
    {"vast-over-limits", Severity::error,
     "VAST over the limits (64 MiB, depth 256, 256 attributes, 1 MiB of names) is not read on.",
     "Make the document smaller."},
    {"vast-without-ad", Severity::error, "VAST without an Ad element gives no ad: nothing starts.",
     "Put one Ad element into the document."},
    {"vast-root", Severity::warning,
     "Ad elements count wherever they stand; a document that is no VAST may hold unexpected ones.",
     "Hand out the VAST element as the document."},
    {"vast-several-ads", Severity::warning, "Of several ads in one document only the first counts.",
     "Give each ad a document, and an entry under \"ads\"."},
    {"vast-wrapper", Severity::error,
     "Wrappers are not followed: what they lead to is neither shown nor pinged.",
     "Resolve wrappers on the server, and put their pings into one InLine ad."},
    {"element-name", Severity::error,
     "Element names count exactly; another case or a prefix hides the element.",
     "Write the element's name as VAST has it, without a prefix."},
    {"text-pieces", Severity::error,
     "Of a title, system or description that comes in pieces the last piece is kept.",
     "Put the whole text into one CDATA section with no white space around it."},
    {"impression-missing", Severity::warning,
     "Without an Impression no server hears that the ad was shown.",
     "Add an Impression element with its URL."},

    // Pings.
    {"ping-white-space", Severity::warning,
     "White space around a CDATA section, or an empty one, is a ping of its own that always fails.",
     "Write the element on one line: <Impression><![CDATA[URL]]></Impression>."},
    {"ping-pieces", Severity::error,
     "A URL that is split at a reference, a comment or a section is pinged piece by piece.",
     "Put the whole URL into one CDATA section."},
    {"ping-behind-element", Severity::error, "Text behind a nested element is not read.",
     "Put nothing but the URL into the element."},
    {"ping-refused", Severity::error,
     "A URL that the HTTP client refuses is never sent; the ping fails.",
     "Write an absolute http or https URL without spaces, with every character escaped that needs "
     "it."},
    {"ping-without-url", Severity::warning, "An element without text files no ping.",
     "Write the URL into the element, or remove the element."},
    {"ping-unfilled-macro", Severity::warning,
     "Of macros only [SDKV] is filled; any other goes out as it is written.",
     "Fill the macro on the server."},
    {"ping-twice", Severity::warning, "A URL that is filed twice for an event is pinged twice.",
     "Remove one of them."},
    {"ping-parameter-dropped", Severity::error,
     "A measurement URL loses each query parameter without exactly one \"=\", and repeated ones.",
     "Write each parameter once, as name=value, with \"=\" in values escaped as %3D."},
    {"tracking-outside-linear", Severity::error,
     "Tracking within Creatives counts only inside Linear.",
     "Move it into the Linear element, or to the ad."},
    {"tracking-in-extension", Severity::warning,
     "Pings that stand in an extension or verification are sent with the ad's own.",
     "Remove them, or give them another element name."},
    {"tracking-without-event", Severity::error, "A Tracking element without \"event\" is dropped.",
     "Write the event's name."},
    {"tracking-unknown-event", Severity::warning,
     "Pings of an event that VAST does not know are never sent.", "Correct the name of the event."},
    {"tracking-never-sent", Severity::note,
     "Pings of errors, of viewers' actions and of companions are kept and never sent.",
     "Nothing, or send them from the host application."},

    // Creatives and companions.
    {"linear-missing", Severity::warning,
     "Without a linear creative only the ad's own pings are sent.",
     "Add a creative with a Linear element."},
    {"creative-not-selected", Severity::error,
     "Only the first linear creative is selected; pings of the others are never sent.",
     "Keep one linear creative."},
    {"universal-ad-id-late", Severity::error,
     "A UniversalAdId that follows Linear does not reach the creative.",
     "Move UniversalAdId before Linear."},
    {"universal-ad-id-replaced", Severity::warning,
     "Of several UniversalAdId elements before Linear the last one counts.",
     "Keep the one that matters, or put it last."},
    {"companion-resource-white-space", Severity::error,
     "White space behind the CDATA section of a StaticResource takes the place of its URL.",
     "Write the element on one line: <StaticResource><![CDATA[URL]]></StaticResource>."},
    {"companion-resource-pieces", Severity::error,
     "Of a companion's resource that comes in pieces the last piece is kept.",
     "Put the whole URL into one CDATA section."},
    {"companion-resource-replaced", Severity::warning,
     "Of several StaticResource elements of a companion the last one counts.",
     "Keep one, or make a companion of each."},
    {"companion-without-resource", Severity::warning,
     "A companion without StaticResource has nothing to show; other resources are not read.",
     "Give the companion a StaticResource."},
});

constexpr std::size_t ruleIndex(std::string_view id) {
  std::size_t index = 0;
  while (ruleTable[index].id != id) ++index;
  return index;
}

/// A rule by its id; an id that is not in the table does not compile.
struct RuleID {
  consteval RuleID(const char* id) : index(ruleIndex(id)) {}  // NOLINT(google-explicit-constructor)
  std::size_t index;
};

constexpr std::string_view severityName(Severity severity) {
  return severity == Severity::error ? "error" : severity == Severity::warning ? "warning" : "note";
}

}  // namespace xel::inspect
