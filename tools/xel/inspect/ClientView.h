#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/model/XELAd.h"
#include "xel/model/XELCuepoint.h"
#include "xel/platform/Environment.h"
#include "xel/platform/Platform.h"
#include "xel/simulation/ScriptedDisplay.h"

#include "document/StreamDocument.h"

namespace xel::inspect {

/// The events that are ever pinged, in order of time.
inline constexpr std::array<std::string_view, 6> pingedEvents = {
    "start", "creativeview", "firstquartile", "midpoint", "thirdquartile", "complete"};

/// What the library and its host say of themselves in requests and pings.
struct ClientFacts {
  std::optional<std::string> libraryVersion = makeLinuxEnvironment({})->libraryVersion();
  std::optional<std::string> applicationIdentifier = "com.example.player";
  std::array<std::string, 2> measurementDomains = Services().measurementDomains;
  std::string manifestSuffix = {};
};

/// A tracking request, as the library sent it.
struct PingView {
  std::string event;
  std::string url;
  /// Why an HTTP client refuses it; absent when it goes out.
  std::optional<std::string> refusal;
};

/// An ad that is taken through all its events in a session of its own.
struct AdView {
  /// Null when the library makes no ad of it: then it never starts.
  std::shared_ptr<XELAd> ad;
  /// In the order of sending.
  std::vector<PingView> pings;
};

/// What the library does with the answer to a stream request.
struct AnswerView {
  /// Absent when the host does not hear of a session.
  std::optional<std::string> streamID;
  /// What the host hears; empty when nothing fails.
  std::string error;
  /// The stream info document that is asked for.
  std::optional<std::string> documentURL;
  /// Seconds; absent when the document is not asked for again.
  std::optional<double> pollingPeriod;
  /// In order: a pre-roll, and the stream when the pre-roll's break has completed.
  std::vector<simulation::ScriptedDisplay::Load> loads;
};

/// A quartile or complete of a document that has no effect in a session that plays everything.
struct LostEvent {
  StreamDocument::Event event;
  /// Such as "another ad, ad-2, has started".
  std::string reason;
};

/// An on-demand document, played from its first second to its last without a pause.
struct PlayThrough {
  /// By the document's ads; null for an ad that did not start.
  std::vector<std::shared_ptr<XELAd>> ads;
  std::vector<LostEvent> lost;
  /// As the host hears of them, played ones marked.
  std::vector<std::shared_ptr<XELCuepoint>> cuepoints;
};

/// What the client makes of a document.
struct ClientView {
  /// Of the answer to a stream request.
  std::optional<AnswerView> answer;
  /// Of a stream info document, or of a VAST document, which stands in one as its only ad.
  StreamDocument document;
  /// By the document's ads.
  std::vector<AdView> ads;
  /// On demand only.
  std::optional<PlayThrough> playThrough;
};

}  // namespace xel::inspect
