#pragma once

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <httplib.h>

#include "common/TemporaryFolder.h"
#include "serve/Certificate.h"
#include "serve/FaultInjector.h"
#include "serve/Ledger.h"
#include "serve/PingCheck.h"
#include "serve/ServedStream.h"
#include "serve/SessionList.h"
#include "serve/StreamRequestCheck.h"

namespace xel::serve {

/// A stand-in ad server over HTTPS on the loopback interface: stream requests, documents,
/// playlists and tracking, with a ledger of all that it received.
///
/// Each stream request makes a session of its own, numbered from 1.
/// Threads: made, started and destroyed on one thread; it answers on threads of its own.
class AdServer {
 public:
  struct Settings {
    /// 0 picks a free one.
    int port = 0;
    Credentials credentials;
    StreamSources streams;
    /// What goes wrong from the start.
    std::vector<Fault> faults;
    /// Writes a line to standard error for each request.
    bool verbose = false;
  };

  /// Starts to serve. Throws std::runtime_error when it cannot.
  explicit AdServer(Settings settings);
  /// Stops, and waits for the answers under way.
  ~AdServer();
  AdServer(const AdServer&) = delete;
  AdServer& operator=(const AdServer&) = delete;

  /// Such as "https://localhost:8443".
  const std::string& url() const noexcept { return url_; }
  /// The certificate that clients must trust, as PEM; there for as long as the server is.
  const std::filesystem::path& caFile() const noexcept { return caFile_; }
  /// Holds the pings received so far against what the documents promise. Threads: any.
  PingVerdict checkPings(Expectation expectation);

 private:
  void addRoutes();
  void recordRequests();
  void listen();
  void answerStreamRequest(StreamKind kind, const httplib::Request& request,
                           httplib::Response& response);
  /// Tells the stream what has become of the document that was asked for.
  void documentAnswered(const httplib::Request& request, const httplib::Response& response);
  void answerDocument(const httplib::Request& request, httplib::Response& response);
  void answerPlaylist(const httplib::Request& request, httplib::Response& response);
  void answerPreroll(const httplib::Request& request, httplib::Response& response);
  void answerPing(const httplib::Request& request, httplib::Response& response);
  /// The stream that the path names; null when there is none. Call with `mutex_` held.
  ServedStream* streamOf(const httplib::Request& request) const;

  const Settings settings_;
  const TemporaryFolder folder_;
  const Certificate certificate_;
  const std::filesystem::path caFile_;
  std::string url_;
  Ledger ledger_;
  FaultInjector faults_;
  std::mutex mutex_;
  std::condition_variable documentAnswered_;  ///< Or the server is stopping.
  SessionList sessions_;                      ///< Guarded by mutex_.
  bool stopping_ = false;                     ///< Guarded by mutex_.
  httplib::SSLServer server_;
  std::thread thread_;
};

}  // namespace xel::serve
