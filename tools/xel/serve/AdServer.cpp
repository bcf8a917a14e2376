#include "serve/AdServer.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include <sys/socket.h>

#include "xel/platform/JSONValue.h"

#include "common/PrintableText.h"
#include "serve/MediaRoutes.h"

namespace xel::serve {
namespace {

constexpr const char* json = "application/json";
constexpr const char* m3u8 = "application/vnd.apple.mpegurl";
constexpr const char* plainText = "text/plain";
constexpr const char* documentName = "/events.json";
constexpr const char* noSuchSession = "There is no such session.";
constexpr const char* loopback = "127.0.0.1";

/// Each open connection of a player takes a thread.
constexpr std::size_t threads = 96;
constexpr std::size_t requestsPerConnection = 1'000'000;
constexpr int idleSeconds = 3;
constexpr std::size_t longestRequest = std::size_t{1} << 20;

/// How long a playlist waits for its player to fetch a document that knows its ads.
constexpr std::chrono::duration<double> longestWait{3 * ServedStream::pollingPeriod};

/// The place of the request that this thread is answering.
thread_local std::optional<std::size_t> placeInLedger;

void refuse(httplib::Response& response, int status, const std::string& sentence) {
  response.status = status;
  response.set_content(sentence + "\n", plainText);
}

}  // namespace

AdServer::AdServer(Settings settings)
    : settings_(std::move(settings)),
      caFile_(folder_.path() / "ca.pem"),
      faults_(settings_.faults,
              [this](const Fault& fault, bool isAnswerLost) {
                ledger_.strike(*placeInLedger, fault.text, isAnswerLost);
              }),
      sessions_(settings_.streams),
      server_(certificate_.x509(), certificate_.key()) {
  certificate_.write(caFile_);
  addRoutes();
  recordRequests();
  listen();
}

AdServer::~AdServer() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  documentAnswered_.notify_all();
  faults_.stop();
  server_.stop();
  thread_.join();
}

void AdServer::addRoutes() {
  using httplib::Request;
  using httplib::Response;
  const std::pair<const char*, StreamKind> endpoints[] = {
      {"/ssai/event/([^/]+)/streams", StreamKind::live},
      {"/ondemand/hls/content/([^/]+)/vid/([^/]+)/streams", StreamKind::vod}};
  for (const auto& [path, kind] : endpoints) {
    server_.Post(path, faults_.wrap(Endpoint::init, [this, kind = kind](const Request& request,
                                                                        Response& response) {
      answerStreamRequest(kind, request, response);
    }));
    server_.Get(path, [](const Request&, Response& response) {
      response.set_header("Allow", "POST");
      refuse(response, 405, "A stream request is a POST.");
    });
  }
  const auto add = [this](const char* path, Endpoint endpoint,
                          void (AdServer::*answer)(const Request&, Response&)) {
    server_.Get(path,
                faults_.wrap(endpoint, [this, answer](const Request& request, Response& response) {
                  (this->*answer)(request, response);
                }));
  };
  add(R"(/streams/(\d+)/events\.json)", Endpoint::document, &AdServer::answerDocument);
  add(R"(/streams/(\d+)/main\.m3u8)", Endpoint::manifest, &AdServer::answerPlaylist);
  add(R"(/streams/(\d+)/preroll\.m3u8)", Endpoint::manifest, &AdServer::answerPreroll);
  add("/track/.*", Endpoint::ping, &AdServer::answerPing);
  addMediaRoutes(server_, faults_, mutex_,
                 [this](const Request& request) { return streamOf(request); });
  server_.Get(R"(/streams/(\d+)/en\.vtt)", [](const Request&, Response& response) {
    response.set_content("WEBVTT\n", "text/vtt");
  });
  faults_.addRoutes(server_);
  server_.Get("/ledger", [this](const Request&, Response& response) {
    response.set_content(ledger_.json(), json);
  });
  server_.Get("/documents", [this](const Request&, Response& response) {
    const std::lock_guard lock(mutex_);
    response.set_content(sessions_.documents(), json);
  });
  server_.set_error_handler([](const Request& request, Response& response) {
    if (!response.body.empty()) return;
    refuse(response, response.status,
           response.status == 404 ? "There is nothing at " + request.path + "."
                                  : "The request cannot be answered.");
  });
}

void AdServer::recordRequests() {
  server_.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response&) {
    Ledger::Entry entry{request.method, request.target, {}};
    for (const char* name :
         {"User-Agent", "Authorization", "Content-Type", "Cache-Control", "Pragma"}) {
      if (request.has_header(name)) {
        entry.headers.emplace_back(name, request.get_header_value(name));
      }
    }
    placeInLedger = ledger_.begin(std::move(entry));
    return httplib::Server::HandlerResponse::Unhandled;
  });
  server_.set_post_routing_handler([this](const httplib::Request& request,
                                          httplib::Response& response) {
    if (!placeInLedger) return;  // What came was no request.
    const auto status = response.status == noAnswer ? std::nullopt : std::optional(response.status);
    ledger_.finish(*placeInLedger, request.body, status);
    if (settings_.verbose) {
      const std::string line = printable(request.method + " " + request.target);
      const std::string result = status ? std::to_string(*status) : "without an answer";
      std::fprintf(stderr, "%s %s\n", line.c_str(), result.c_str());
    }
  });
  server_.set_logger([this](const httplib::Request& request, const httplib::Response& response) {
    // By now the answer has been written.
    if (placeInLedger && request.path.ends_with(documentName)) documentAnswered(request, response);
    placeInLedger.reset();
  });
}

void AdServer::listen() {
  server_.new_task_queue = [] { return new httplib::ThreadPool(threads); };
  server_.set_keep_alive_max_count(requestsPerConnection);
  server_.set_keep_alive_timeout(idleSeconds);
  server_.set_payload_max_length(longestRequest);
  server_.set_tcp_nodelay(true);
  // The library's default would let two servers share a port.
  server_.set_socket_options([](int socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  int port = settings_.port;
  const bool bound = port == 0 ? (port = server_.bind_to_any_port(loopback)) > 0
                               : server_.bind_to_port(loopback, port);
  if (!bound) {
    throw std::runtime_error("port " + std::to_string(settings_.port) +
                             " cannot be listened on; is it taken?");
  }
  url_ = "https://localhost:" + std::to_string(port);
  thread_ = std::thread([this] { server_.listen_after_bind(); });
  // A server that is not running yet cannot be stopped.
  while (!server_.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void AdServer::answerStreamRequest(StreamKind kind, const httplib::Request& request,
                                   httplib::Response& response) {
  const auto refusal = refusalOf({kind, request.get_header_value("User-Agent"),
                                  request.get_header_value("Authorization"), request.body},
                                 settings_.credentials);
  if (refusal) return refuse(response, refusal->status, refusal->sentence);

  const std::lock_guard lock(mutex_);
  response.set_content(sessions_.open({kind, request.body, *placeInLedger}, url_), json);
}

void AdServer::answerDocument(const httplib::Request& request, httplib::Response& response) {
  const std::lock_guard lock(mutex_);
  ServedStream* const stream = streamOf(request);
  if (!stream) return refuse(response, 404, noSuchSession);
  response.set_content(stream->fetchDocument(), json);
}

void AdServer::documentAnswered(const httplib::Request& request,
                                const httplib::Response& response) {
  const bool isSent = response.status == 200 && !ledger_.isAnswerLost(*placeInLedger);
  const std::lock_guard lock(mutex_);
  ServedStream* const stream = streamOf(request);
  if (!stream) return;
  if (isSent) {
    stream->documentSent();
  } else {
    stream->documentLost();
  }
  documentAnswered_.notify_all();
}

void AdServer::answerPlaylist(const httplib::Request& request, httplib::Response& response) {
  std::unique_lock lock(mutex_);
  ServedStream* const stream = streamOf(request);
  if (!stream) return refuse(response, 404, noSuchSession);
  documentAnswered_.wait_for(lock, longestWait,
                             [&] { return stopping_ || stream->isNextSegmentDue(); });
  response.set_content(stream->fetchPlaylist(), m3u8);
}

void AdServer::answerPreroll(const httplib::Request& request, httplib::Response& response) {
  const std::lock_guard lock(mutex_);
  const ServedStream* const stream = streamOf(request);
  if (!stream) return refuse(response, 404, noSuchSession);
  const std::string playlist = stream->prerollPlaylist();
  if (playlist.empty()) return refuse(response, 404, "This session has no pre-roll.");
  response.set_content(playlist, m3u8);
}

void AdServer::answerPing(const httplib::Request&, httplib::Response& response) {
  response.status = 204;
}

ServedStream* AdServer::streamOf(const httplib::Request& request) const {
  return sessions_.find(request.matches[1]);
}

PingVerdict AdServer::checkPings(Expectation expectation) {
  const std::lock_guard lock(mutex_);
  const auto ledger = ledger_.entries();
  return serve::checkPings(sessions_.records(ledger), ledger, expectation);
}

}  // namespace xel::serve
