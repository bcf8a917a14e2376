#include "serve/MediaRoutes.h"

#include <charconv>
#include <cstddef>
#include <string>

namespace xel::serve {
namespace {

constexpr const char* m3u8 = "application/vnd.apple.mpegurl";

Rendition renditionFrom(const std::string& name) {
  if (name == nameOf(Rendition::audio)) return Rendition::audio;
  return name == nameOf(Rendition::high) ? Rendition::high : Rendition::low;
}

void refuse(httplib::Response& response, const char* sentence) {
  response.status = 404;
  response.set_content(sentence, "text/plain");
}

void answerPlaylist(const ServedStream& stream, MediaStream& media, const httplib::Request& request,
                    httplib::Response& response) {
  const Rendition rendition = renditionFrom(request.matches[3]);
  response.set_content(media.playlist(rendition, stream.settings().now()), m3u8);
}

void answerSegment(const ServedStream&, MediaStream& media, const httplib::Request& request,
                   httplib::Response& response) {
  const Rendition rendition = renditionFrom(request.matches[3]);
  const std::string digits = request.matches[4];
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const auto bytes = error == std::errc{} ? media.segment(rendition, number) : std::nullopt;
  if (!bytes) return refuse(response, "The stream has no such segment.\n");
  response.set_content(*bytes, rendition == Rendition::audio ? "audio/aac" : "video/mp2t");
}

void answerAudio(const ServedStream&, MediaStream&, const httplib::Request&,
                 httplib::Response& response) {
  response.set_content(MediaStream::masterPlaylist("main", {Rendition::audio}), m3u8);
}

}  // namespace

void addMediaRoutes(httplib::Server& server, FaultInjector& faults, std::mutex& mutex,
                    const StreamFinder& find) {
  const auto add = [&](const char* path, Endpoint endpoint, auto answer) {
    server.Get(path, faults.wrap(endpoint, [&mutex, find, answer](const httplib::Request& request,
                                                                  httplib::Response& response) {
      const std::lock_guard lock(mutex);
      ServedStream* const stream = find(request);
      MediaStream* const media = stream ? stream->media(request.matches[2]) : nullptr;
      if (!media) return refuse(response, "There is no such session, or it has no such media.\n");
      answer(*stream, *media, request, response);
    }));
  };
  add(R"(/streams/(\d+)/(main|preroll)/(low|high|audio)\.m3u8)", Endpoint::manifest,
      answerPlaylist);
  add(R"(/streams/(\d+)/(main|preroll)/(low|high|audio)-(\d+)\.(?:ts|aac))", Endpoint::segment,
      answerSegment);
  add(R"(/streams/(\d+)/(audio)\.m3u8)", Endpoint::manifest, answerAudio);
}

}  // namespace xel::serve
