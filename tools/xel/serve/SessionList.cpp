#include "serve/SessionList.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <string_view>
#include <utility>

#include "serve/Placeholder.h"

namespace xel::serve {
namespace {

double steadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// The field's value in a form; empty when it has none.
std::string fieldOf(std::string_view form, const std::string& name) {
  const std::string fields = "&" + std::string(form);
  const auto at = fields.find("&" + name + "=");
  if (at == std::string::npos) return {};
  const auto start = at + name.size() + 2;
  return fields.substr(start, fields.find('&', start) - start);
}

}  // namespace

std::string SessionList::open(const GrantedRequest& request, const std::string& server) {
  const std::string number = std::to_string(sessions_.size() + 1);
  ServedStream::Settings stream;
  stream.kind = request.kind;
  stream.preroll =
      request.kind == StreamKind::live && fieldOf(request.body, "attempt_preroll") == "true";
  stream.liveDuration = sources_.liveDuration;
  stream.streamID = "stream-" + number;
  stream.url = server + "/streams/" + number;
  stream.trackingURL = server + "/track/" + number;
  stream.measurementDomains = sources_.measurementDomains;
  stream.document = sources_.document;
  stream.media = sources_.media;
  stream.now = steadySeconds;
  sessions_.push_back({std::make_unique<ServedStream>(std::move(stream)),
                       request.place,
                       {fieldOf(request.body, "sdkv"), sources_.measurementDomains, server}});
  const ServedStream& made = *sessions_.back().stream;
  return sources_.answer ? filledIn(sources_.answer->text, "{session}", made.settings().url)
                         : made.answer();
}

ServedStream* SessionList::find(const std::string& number) const {
  std::size_t place = 0;
  std::from_chars(number.data(), number.data() + number.size(), place);
  return place >= 1 && place <= sessions_.size() ? sessions_[place - 1].stream.get() : nullptr;
}

std::string SessionList::documents() const {
  std::string text;
  for (const auto& session : sessions_) {
    const auto& settings = session.stream->settings();
    const std::string& document = session.stream->sentDocument();
    text += text.empty() ? "[" : ",";
    text += R"({"streamID":")" + settings.streamID + R"(","streamType":")" +
            (settings.kind == StreamKind::live ? "live" : "on_demand") + R"(","document":)" +
            (document.empty() ? "null" : document) + "}";
  }
  return text.empty() ? "[]" : text + "]";
}

std::vector<SessionRecord> SessionList::records(const std::vector<Ledger::Entry>& ledger) const {
  std::vector<SessionRecord> records;
  for (std::size_t i = 0; i < sessions_.size(); ++i) {
    const auto& [stream, requestPlace, sender] = sessions_[i];
    if (ledger[requestPlace].isAnswerLost) continue;
    records.push_back({i + 1, stream->settings().kind == StreamKind::live ? "live" : "on demand",
                       stream->sentDocument(), "/track/" + std::to_string(i + 1) + "/", sender});
  }
  return records;
}

}  // namespace xel::serve
