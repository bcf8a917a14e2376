#include "simulation/trace/RecordingPlatform.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulation/UTF8.h"
#include "simulation/trace/TraceOutput.h"

namespace xel::simulation {
namespace {

constexpr std::size_t longestShownBody = std::size_t{1} << 20;

std::string hexadecimal(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    text += digits[static_cast<unsigned char>(c) >> 4];
    text += digits[static_cast<unsigned char>(c) & 15];
  }
  return text;
}

bool isText(std::string_view body) {
  const auto isControl = [](char c) {
    return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
  };
  return std::none_of(body.begin(), body.end(), isControl) && withValidUTF8(body) == body;
}

void redactHeaders(Redactor& redactor, std::vector<HTTPHeader>& headers) {
  for (auto& [name, value] : headers) value = redactor.headerValue(name, value);
}

void writeResponse(JSONWriter& line, Redactor& redactor, HTTPResponse response) {
  redactHeaders(redactor, response.headers);
  line.member("status", response.status);
  writeHeaders(line, response.headers);
  if (isText(response.body)) {
    if (!response.body.empty()) line.member("body", response.body);
    return;
  }
  const auto body = redactor.text(response.body);
  line.member("body", std::string_view(body).substr(0, longestShownBody));
  line.name("bodyHex").keyword(hexadecimal(body));
}

class RecordingHTTPClient final : public HTTPClient {
 public:
  RecordingHTTPClient(std::shared_ptr<TraceWriter> writer, std::shared_ptr<HTTPClient> client)
      : writer_(std::move(writer)), client_(std::move(client)) {}

  void send(HTTPRequest request, Completion completion) override {
    const auto id = writer_->nextID();
    if (id == 0) return client_->send(std::move(request), std::move(completion));
    const auto client = client_;
    auto recorded = request;
    redactHeaders(writer_->redactor(), recorded.headers);
    const auto call = writer_->output("httpRequest", [&](JSONWriter& line) {
      line.member("id", id);
      writeRequest(line, recorded);
    });
    client->send(std::move(request), [writer = writer_, id, sentAt = writer_->now(),
                                      completion = std::move(completion)](HTTPResult result) {
      writer->input("httpResult", [&](JSONWriter& line) {
        line.member("id", id);
        if (result.error) {
          line.member("error", result.error);
        } else {
          writeResponse(line, writer->redactor(), result.response);
        }
        line.member("ms", std::round((writer->now() - sentAt) * 1e6) / 1e3);
      });
      if (completion) completion(std::move(result));
    });
  }

 private:
  const std::shared_ptr<TraceWriter> writer_;
  const std::shared_ptr<HTTPClient> client_;
};

class RecordingRunLoop final : public RunLoop {
 public:
  RecordingRunLoop(std::shared_ptr<TraceWriter> writer, std::shared_ptr<RunLoop> loop)
      : writer_(std::move(writer)), loop_(std::move(loop)) {}

  void post(std::function<void()> function) override { loop_->post(std::move(function)); }
  bool isMain() const override { return loop_->isMain(); }

  TimerID every(double seconds, std::function<void()> function) override {
    const auto id = writer_->nextID();
    if (id == 0) return loop_->every(seconds, std::move(function));
    const auto call = writer_->output(
        "timerSet", [&](JSONWriter& line) { line.member("id", id).member("seconds", seconds); });
    const auto timer = loop_->every(seconds, [writer = writer_, id, function] {
      writer->input("timerFire", [&](JSONWriter& line) { line.member("id", id); });
      function();
    });
    ids_[timer] = id;
    return timer;
  }

  void cancel(TimerID timer) override {
    const auto known = ids_.extract(timer);
    if (!known) return loop_->cancel(timer);
    const auto call = writer_->output("timerCancel",
                                      [&](JSONWriter& line) { line.member("id", known.mapped()); });
    loop_->cancel(timer);
  }

 private:
  const std::shared_ptr<TraceWriter> writer_;
  const std::shared_ptr<RunLoop> loop_;
  std::map<TimerID, std::uint64_t> ids_;
};

class RecordingEnvironment final : public Environment {
 public:
  RecordingEnvironment(std::shared_ptr<TraceWriter> writer,
                       std::shared_ptr<Environment> environment)
      : writer_(std::move(writer)), environment_(std::move(environment)) {}

  std::optional<std::string> libraryVersion() const override {
    return environment_->libraryVersion();
  }
  std::optional<std::string> applicationIdentifier() const override {
    return environment_->applicationIdentifier();
  }
  std::optional<std::string> applicationVersion() const override {
    return environment_->applicationVersion();
  }
  std::optional<std::string> operatingSystemName() const override {
    return environment_->operatingSystemName();
  }
  std::optional<std::string> operatingSystemVersion() const override {
    return environment_->operatingSystemVersion();
  }
  std::optional<std::string> hardwareModel() const override {
    return environment_->hardwareModel();
  }
  std::string advertisingIdentifier() const override {
    auto identifier = environment_->advertisingIdentifier();
    writer_->redactor().addSecret(identifier);
    return identifier;
  }
  bool isAdvertisingTrackingEnabled() const override {
    return environment_->isAdvertisingTrackingEnabled();
  }

 private:
  const std::shared_ptr<TraceWriter> writer_;
  const std::shared_ptr<Environment> environment_;
};

class RecordingLogTap final : public Log {
 public:
  RecordingLogTap(std::shared_ptr<TraceWriter> writer, std::shared_ptr<Log> log)
      : writer_(std::move(writer)), log_(std::move(log)) {}

  void line(std::string_view text) noexcept override {
    writer_->note("log", [&](JSONWriter& line) { line.member("line", text); });
    log_->line(text);
  }

 private:
  const std::shared_ptr<TraceWriter> writer_;
  const std::shared_ptr<Log> log_;
};

}  // namespace

std::shared_ptr<HTTPClient> recordHTTP(std::shared_ptr<TraceWriter> writer,
                                       std::shared_ptr<HTTPClient> client) {
  return std::make_shared<RecordingHTTPClient>(std::move(writer), std::move(client));
}

std::shared_ptr<RunLoop> recordRunLoop(std::shared_ptr<TraceWriter> writer,
                                       std::shared_ptr<RunLoop> loop) {
  return std::make_shared<RecordingRunLoop>(std::move(writer), std::move(loop));
}

std::shared_ptr<Environment> recordEnvironment(std::shared_ptr<TraceWriter> writer,
                                               std::shared_ptr<Environment> environment) {
  return std::make_shared<RecordingEnvironment>(std::move(writer), std::move(environment));
}

std::shared_ptr<Log> recordLog(std::shared_ptr<TraceWriter> writer, std::shared_ptr<Log> log) {
  return std::make_shared<RecordingLogTap>(std::move(writer), std::move(log));
}

}  // namespace xel::simulation
