#include "tool/faults/FaultedSession.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "xel/platform/Platform.h"
#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/simulation.h"

#include "play/ClockDisplay.h"
#include "serve/AdServer.h"
#include "serve/PromisedPings.h"
#include "tool/faults/PingAccount.h"

namespace xel::serve {
namespace {

using std::chrono::milliseconds;

constexpr const char* application = "com.example.faults";
/// When a request is given up that will have no answer: time enough for it to reach the server,
/// which the first one has to connect to.
constexpr milliseconds soon{100};
constexpr milliseconds whenConnected{500};
constexpr std::size_t playlistsPerPoll = 8;

Endpoint endpointOf(const HTTPRequest& request) {
  if (request.trackingEvent) return Endpoint::ping;
  if (request.url.ends_with(".json")) return Endpoint::document;
  return request.url.ends_with(".m3u8") ? Endpoint::manifest : Endpoint::init;
}

std::string nameOf(const Error& error) {
  return "`" + error.domain + "` " + std::to_string(error.code);
}

struct Transfer {
  milliseconds timeout;
  int sentIn;
  int answeredIn = 0;
  /// Whether the answer came, and tells what it should.
  bool isGood = false;
  bool timedOut = false;

  std::string whenTimedOut() const {
    return timedOut ? ", after " + std::to_string(timeout.count() / 1000) + " s" : "";
  }
};

class FaultedSession final : public HTTPClient,
                             public std::enable_shared_from_this<FaultedSession> {
 public:
  FaultedSession(StreamKind kind, const Fault& fault)
      : kind_(kind), fault_(fault), server_({.faults = {fault}}) {}

  FaultReport run() {
    DefaultPlatformOptions options;
    options.services.liveHost = options.services.vodHost =
        server_.url().substr(std::string_view("https://").size());
    options.host.applicationIdentifier = application;
    options.caFile = server_.caFile();
    options.mainRunLoop = loop_;
    auto platform = Platform::makeDefault(options);
    client_ = std::exchange(platform.http, shared_from_this());
    platform.log = log_;
    const ScopedPlatform scope(std::move(platform));
    play();
    countPings();
    FaultReport report{
        {heard(), seen(), adsNoticed(), pings()}, 0, 0, unaccounted(), loop_->costs()};
    report.struck =
        static_cast<std::size_t>(*fetch("/faults").elements().at(0)["struck"].integer());
    for (const auto& [endpoint, transfers] : transfers_) {
      for (const auto& each : transfers) report.waitedFor += each.answeredIn <= each.sentIn ? 1 : 0;
    }
    client_ = nullptr;
    return report;
  }

 private:
  void play() {
    const auto display = std::make_shared<ClockDisplay>(
        shared_from_this(), loop_, [] { return 0.0; }, std::nullopt);
    const auto manager = XELStreamManager::initWithVideoDisplay(display);
    manager->setDelegate(host_);
    if (kind_ == StreamKind::live) {
      manager->requestStream(XELLiveStreamRequest::initWithAssetKey("news"));
    } else {
      manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("shows", "1"));
    }
    runUntilIdle();
  }

  /// Ends when nothing can happen any more: timers do not fire by themselves.
  void runUntilIdle() {
    loop_->runUntil([this] { return underWay_ == 0; });
  }

  void send(HTTPRequest request, Completion completion) override {
    const auto endpoint = endpointOf(request);
    auto& transfers = transfers_[endpoint];
    const auto place = transfers.size();
    transfers.push_back({request.timeout.value_or(HTTPClient::defaultTimeout), loop_->turn()});
    ++underWay_;
    // The body of a ping's answer is too short to drip for long.
    const bool staysAway = fault_.kind == Fault::Kind::hang ||
                           (fault_.kind == Fault::Kind::slowDrip && endpoint != Endpoint::ping);
    if (staysAway && endpoint == fault_.endpoint && fault_.concerns(place + 1)) {
      request.timeout = endpoint == Endpoint::init ? whenConnected : soon;
    }
    auto pass = [=, this, request = std::move(request), completion = std::move(completion)] {
      client_->send(request, [=, this](HTTPResult result) {
        finish(transfers_[endpoint][place], endpoint, result);
        const bool isPoll = endpoint == Endpoint::document && heldPlaylist_;
        completion(std::move(result));
        if (isPoll) std::exchange(heldPlaylist_, nullptr)();
      });
    };
    const bool waits = endpoint == Endpoint::manifest && place % playlistsPerPoll == 0;
    if (waits && loop_->fireTimers()) {
      heldPlaylist_ = std::move(pass);
    } else {
      pass();
    }
  }

  void finish(Transfer& transfer, Endpoint endpoint, const HTTPResult& result) {
    --underWay_;
    transfer.answeredIn = loop_->turn();
    const auto& error = result.error;
    transfer.timedOut = error && error->code == static_cast<int>(TransferError::timedOut);
    transfer.isGood =
        !error && result.response.status < 400 &&
        (endpoint != Endpoint::document || JSONValue::parse(result.response.body).value.isObject());
  }

  JSONValue fetch(const std::string& path) {
    JSONValue value;
    ++underWay_;
    client_->send({.url = server_.url() + path}, [&](const HTTPResult& result) {
      value = JSONValue::parse(result.response.body).value;
      --underWay_;
    });
    runUntilIdle();
    return value;
  }

  /// From the document that reached the player last, the server's ledger, and the log.
  void countPings() {
    const auto documents = fetch("/documents").elements();
    const auto& platform = Platform::current();
    const auto version = "t." + *platform.environment->libraryVersion() + "/" + application;
    std::set<std::string> started;
    for (const auto& [ad, events] : eventsOfAds()) started.insert(ad);
    pings_.promise(promiseOf(documents.empty() ? JSONValue() : documents[0]["document"],
                             {version, platform.services.measurementDomains, server_.url()}),
                   started);
    pings_.takeLedger(fetch("/ledger"), fault_.kind == Fault::Kind::truncate ? fault_.text : "-");
    pings_.takeLog(log_->lines());
  }

  std::map<std::string, std::string> eventsOfAds() const {
    std::map<std::string, std::string> events;
    for (const auto& event : host_->events()) {
      if (!event.ad || event.name == "didCountdownTo") continue;
      events[event.ad->adKey().value_or("")] += event.name + " ";
    }
    return events;
  }

  std::vector<std::string> unaccounted() const {
    auto lines = pings_.unaccounted();
    for (const auto& [ad, events] : eventsOfAds()) {
      const bool isWhole = events ==
                           "adDidStart adDidCrossFirstQuartile adDidCrossMidpoint "
                           "adDidCrossThirdQuartile adDidComplete ";
      if (!isWhole) lines.push_back(ad + ": " + events);
    }
    return lines;
  }

  /// Null where nothing was sent.
  const Transfer* first(Endpoint endpoint) const {
    const auto found = transfers_.find(endpoint);
    return found == transfers_.end() ? nullptr : &found->second.front();
  }
  const simulation::RecordingDelegate::Event* firstEvent(const std::string& name) const {
    const auto& events = host_->events();
    const auto found = std::find_if(events.begin(), events.end(),
                                    [&](const auto& event) { return event.name == name; });
    return found == events.end() ? nullptr : &*found;
  }

  std::string heard() const {
    const auto* event = firstEvent("didReceiveError");
    if (!event) return "nothing";
    const auto& error = *event->error;
    auto text = nameOf(error);
    // The player's transfer errors have the HTTP library's own words.
    if (error.domain != transferErrorDomain) text += ": " + error.description;
    while (text.ends_with('\n')) text.pop_back();
    const auto url = text.find(server_.url());
    if (url != std::string::npos) text.replace(url, server_.url().size(), "https://…");
    if (error.underlying) text += " (from " + nameOf(*error.underlying) + ")";
    return text + first(fault_.endpoint)->whenTimedOut();
  }

  std::string seen() const {
    const auto* load = first(Endpoint::manifest);
    if (!load) return "nothing";
    if (!firstEvent("streamManagerIsReadyForPlayback")) return "nothing: the player fails";
    const auto* document = first(Endpoint::document);
    if (load->sentIn != document->answeredIn) return "the stream, at another time";
    if (document->timedOut) return "the stream" + document->whenTimedOut();
    return document->isGood ? "the stream" : "the stream, once the document has failed";
  }

  std::string adsNoticed() const {
    std::size_t planned = 0;
    for (const auto& each : namedPlan(kind_, StreamSources().liveDuration).breaks) {
      planned += each.adDurations.size();
    }
    const auto noticed = eventsOfAds().size();
    if (noticed == planned) return "all";
    if (noticed > 0) return std::to_string(noticed) + " of " + std::to_string(planned);
    const bool lacksCuepoints =
        kind_ == StreamKind::vod && first(Endpoint::manifest) && !firstEvent("didUpdateCuepoints");
    return lacksCuepoints ? "none, nor cue points" : "none";
  }

  std::string pings() const {
    if (pings_.promised() == 0) return "none";
    if (pings_.logged() == 0) return "accepted";
    return (pings_.logged() < pings_.promised() ? "some logged as failed" : "logged as failed") +
           first(Endpoint::ping)->whenTimedOut();
  }

  const StreamKind kind_;
  const Fault fault_;
  AdServer server_;
  const std::shared_ptr<TurnLoop> loop_ = std::make_shared<TurnLoop>();
  const std::shared_ptr<simulation::RecordingLog> log_ =
      std::make_shared<simulation::RecordingLog>();
  const std::shared_ptr<simulation::RecordingDelegate> host_ =
      std::make_shared<simulation::RecordingDelegate>();
  std::shared_ptr<HTTPClient> client_;
  std::map<Endpoint, std::vector<Transfer>> transfers_;
  std::function<void()> heldPlaylist_;
  int underWay_ = 0;
  PingAccount pings_;
};

}  // namespace

FaultReport playWithFault(StreamKind kind, const Fault& fault) {
  return std::make_shared<FaultedSession>(kind, fault)->run();
}

}  // namespace xel::serve
