#include "serve/FaultInjector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>

namespace xel::serve {
namespace {

using httplib::Request;
using httplib::Response;

constexpr const char* json = "application/json";
constexpr const char* plainText = "text/plain";
constexpr std::size_t defaultOversize = std::size_t{65} << 20;
constexpr std::size_t defaultRate = 10;
constexpr std::size_t pieceSize = std::size_t{1} << 16;
constexpr double dripsPerSecond = 10;
/// How often a held-back answer looks whether its client is still there.
constexpr std::chrono::milliseconds betweenLooks{200};

int socketOf(const Request& request) { return SSL_get_fd(request.ssl); }

bool hasLeft(const Request& request) {
  pollfd socket = {socketOf(request), POLLRDHUP, 0};
  return poll(&socket, 1, 0) > 0;
}

/// Ends the connection with a TCP reset, which is what Linux makes of a connection to nowhere.
void reset(const Request& request, Response& response) {
  const sockaddr nowhere = {.sa_family = AF_UNSPEC, .sa_data = {}};
  static_cast<void>(connect(socketOf(request), &nowhere, sizeof nowhere));
  // Else OpenSSL would call the connection not ready yet, and httplib write to it for a second.
  SSL_set_shutdown(const_cast<SSL*>(request.ssl), SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN);
  response = Response();
  response.status = noAnswer;
}

std::size_t bytesOr(const Fault& fault, std::size_t standard) {
  return fault.argument < 0 ? standard : static_cast<std::size_t>(fault.argument);
}

void setContent(Response& response, const std::string& body, const char* type) {
  response = Response();
  response.status = 200;
  response.set_content(body, type);
}

/// Replaces the body by one of `length` bytes that `write` sends piece by piece; it answers false
/// to end early.
void provideContent(
    Response& response, std::size_t length,
    std::function<bool(std::size_t offset, const std::string& body, httplib::DataSink& sink)>
        write) {
  // A status that stands for no content would leave the body out.
  if (response.status == 204) response.status = 200;
  const auto type =
      response.has_header("Content-Type") ? response.get_header_value("Content-Type") : plainText;
  response.headers.erase("Content-Type");
  const auto body = std::make_shared<const std::string>(std::exchange(response.body, {}));
  response.set_content_provider(
      length, type,
      [body, write = std::move(write)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        return write(offset, *body, sink);
      });
}

void truncate(const Fault& fault, Response& response) {
  const std::size_t size = response.body.size();
  const std::size_t sent = std::min(bytesOr(fault, size / 2), size);
  provideContent(response, std::max(size, sent + 1),
                 [sent](std::size_t offset, const std::string& body, httplib::DataSink& sink) {
                   return offset < sent && sink.write(body.data() + offset, sent - offset);
                 });
}

/// The body as it is, with line ends after it.
void oversize(const Fault& fault, Response& response) {
  const std::size_t length = std::max(bytesOr(fault, defaultOversize), response.body.size());
  provideContent(response, length,
                 [length](std::size_t offset, const std::string& body, httplib::DataSink& sink) {
                   if (offset < body.size()) {
                     return sink.write(body.data() + offset,
                                       std::min(body.size(), length) - offset);
                   }
                   const std::string filling(std::min(pieceSize, length - offset), '\n');
                   return sink.write(filling.data(), filling.size());
                 });
}

void malform(Endpoint endpoint, Response& response) {
  switch (endpoint) {
    case Endpoint::init:
    case Endpoint::document:
      return setContent(response, R"({"stream_id": "broken, "times": [})", json);
    case Endpoint::manifest:
      return setContent(response, "#EXTM3\n#EXTINF:two,\n#EXT-X-ENDLIST", "application/x-mpegurl");
    case Endpoint::segment:
      return setContent(response, std::string(pieceSize, '\xA5'), "video/mp2t");
    case Endpoint::ping:
      return setContent(response, "\x89GIF\xFF", "image/gif");
  }
}

}  // namespace

FaultInjector::FaultInjector(std::vector<Fault> faults, Report report)
    : faults_(std::move(faults)), report_(std::move(report)) {}

httplib::Server::Handler FaultInjector::wrap(Endpoint endpoint, httplib::Server::Handler handler) {
  return
      [this, endpoint, handler = std::move(handler)](const Request& request, Response& response) {
        const auto fault = faults_.strike(endpoint);
        if (!fault) return handler(request, response);
        report_(*fault, fault->losesAnswer());
        answer(*fault, handler, request, response);
      };
}

void FaultInjector::addRoutes(httplib::Server& server) {
  server.Get("/faults", [this](const Request&, Response& response) {
    response.set_content(faults_.json(), json);
  });
  server.Put("/faults", [this](const Request& request, Response& response) {
    try {
      faults_.replace(FaultList::parse(request.body));
      response.set_content(faults_.json(), json);
    } catch (const std::invalid_argument& error) {
      response.status = 400;
      response.set_content(std::string(error.what()) + "\n", plainText);
    }
  });
}

void FaultInjector::stop() {
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
  }
  stops_.notify_all();
}

void FaultInjector::answer(const Fault& fault, const httplib::Server::Handler& handler,
                           const Request& request, Response& response) {
  switch (fault.kind) {
    case Fault::Kind::delay:
      if (wait(Seconds(fault.argument), request)) return handler(request, response);
      report_(fault, true);
      return reset(request, response);
    case Fault::Kind::hang:
      wait(Seconds(std::numeric_limits<double>::infinity()), request);
      return reset(request, response);
    case Fault::Kind::reset:
      return reset(request, response);
    case Fault::Kind::status:
      response.status = static_cast<int>(fault.argument);
      if (response.status == 204 || response.status == 304) return;
      return response.set_content("The fault " + fault.text + " struck.\n", plainText);
    case Fault::Kind::redirectLoop:
      return response.set_redirect(request.target, 307);
    case Fault::Kind::malformed:
      return malform(fault.endpoint, response);
    case Fault::Kind::wrongType:
      return setContent(response, "<!DOCTYPE html>\n<title>Sign in</title>\n", "text/html");
    case Fault::Kind::truncate:
      handler(request, response);
      return truncate(fault, response);
    case Fault::Kind::oversized:
      handler(request, response);
      return oversize(fault, response);
    case Fault::Kind::slowDrip:
      handler(request, response);
      return dripSlowly(fault, request, response);
  }
}

void FaultInjector::dripSlowly(const Fault& fault, const Request& request, Response& response) {
  const auto rate = static_cast<double>(bytesOr(fault, defaultRate));
  const auto drop = static_cast<std::size_t>(std::ceil(rate / dripsPerSecond));
  if (response.body.empty()) response.set_content(" ", plainText);
  provideContent(
      response, response.body.size(),
      [=, this, &request](std::size_t offset, const std::string& body, httplib::DataSink& sink) {
        const std::size_t size = std::min(drop, body.size() - offset);
        const bool isSent = wait(Seconds(static_cast<double>(size) / rate), request) &&
                            sink.write(body.data() + offset, size);
        if (!isSent) report_(fault, true);
        return isSent;
      });
}

bool FaultInjector::wait(Seconds time, const Request& request) {
  std::unique_lock lock(mutex_);
  for (Seconds left = time; left > Seconds::zero() && !isStopping_; left -= betweenLooks) {
    if (hasLeft(request)) return false;
    stops_.wait_for(lock, std::min<Seconds>(left, betweenLooks), [this] { return isStopping_; });
  }
  return !isStopping_ && !hasLeft(request);
}

}  // namespace xel::serve
