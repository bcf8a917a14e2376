#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include <httplib.h>

#include "serve/MediaStream.h"

namespace xel {

/// The media of all tests of a build: made by the first of them.
inline std::shared_ptr<const serve::MediaLibrary> testMedia() {
  static const auto library = std::make_shared<const serve::MediaLibrary>(XEL_TEST_MEDIA);
  return library;
}

inline double steadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// A server of streams on loopback, good and bad ones. What is told it before a request counts.
class MediaServer {
 public:
  MediaServer() {
    server_.new_task_queue = [] { return new httplib::ThreadPool(64); };
    server_.Get("/.*", [this](const httplib::Request& request, httplib::Response& response) {
      answer(request.path, response);
    });
    url_ = "http://127.0.0.1:" + std::to_string(server_.bind_to_any_port("127.0.0.1"));
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    // A server that is not running yet cannot be stopped.
    while (!server_.is_running()) std::this_thread::yield();
  }
  ~MediaServer() {
    {
      const std::lock_guard lock(mutex_);
      isStopping_ = true;
    }
    stopping_.notify_all();
    server_.stop();
    thread_.join();
  }
  MediaServer(const MediaServer&) = delete;
  MediaServer& operator=(const MediaServer&) = delete;

  const std::string& url() const noexcept { return url_; }

  /// Serves a stitched stream with all its renditions; its master playlist is at "/NAME.m3u8".
  /// @return the master playlist's URL.
  std::string add(const std::string& name, const serve::StreamPlan& plan, bool isLive = false) {
    const std::lock_guard lock(mutex_);
    streams_.emplace(name, serve::MediaStream(testMedia(), plan, isLive));
    return addText("/" + name + ".m3u8", serve::MediaStream::masterPlaylist(name));
  }
  std::string addText(const std::string& path, const std::string& text) {
    texts_[path] = text;
    return url_ + path;
  }
  /// Answers a path with status 404.
  void remove(const std::string& path) {
    const std::lock_guard lock(mutex_);
    removed_.insert(path);
  }
  /// Takes requests for a path, and never answers.
  std::string hang(const std::string& path) {
    const std::lock_guard lock(mutex_);
    hanging_.insert(path);
    return url_ + path;
  }
  /// How many requests had this in their path.
  std::size_t countOf(const std::string& part) {
    const std::lock_guard lock(mutex_);
    std::size_t count = 0;
    for (const auto& [path, times] : requests_) {
      if (path.find(part) != std::string::npos) count += times;
    }
    return count;
  }

 private:
  void answer(const std::string& path, httplib::Response& response) {
    std::unique_lock lock(mutex_);
    ++requests_[path];
    if (hanging_.count(path) != 0) return stopping_.wait(lock, [this] { return isStopping_; });
    response.status = 404;
    if (removed_.count(path) != 0) return;
    std::optional<std::string> body;
    if (const auto text = texts_.find(path); text != texts_.end()) body = text->second;
    for (auto& [name, stream] : streams_) {
      if (path.starts_with("/" + name + "/")) body = mediaAt(stream, path.substr(name.size() + 2));
    }
    if (!body) return;
    response.status = 200;
    response.set_content(*body, path.ends_with(".m3u8") ? "application/vnd.apple.mpegurl"
                                                        : "application/octet-stream");
  }

  /// @param file such as "low.m3u8" or "high-3.ts".
  static std::optional<std::string> mediaAt(serve::MediaStream& stream, const std::string& file) {
    using serve::Rendition;
    const std::string name = file.substr(0, file.find_first_of("-."));
    const auto rendition = name == "audio"  ? Rendition::audio
                           : name == "high" ? Rendition::high
                                            : Rendition::low;
    if (file.ends_with(".m3u8")) return stream.playlist(rendition, steadySeconds());
    return stream.segment(rendition, std::stoul(file.substr(name.size() + 1)));
  }

  httplib::Server server_;
  std::string url_;
  std::thread thread_;
  std::mutex mutex_;  ///< Guards what follows.
  std::condition_variable stopping_;
  bool isStopping_ = false;
  std::map<std::string, serve::MediaStream> streams_;
  std::map<std::string, std::string> texts_;
  std::set<std::string> removed_, hanging_;
  std::map<std::string, std::size_t> requests_;
};

}  // namespace xel
