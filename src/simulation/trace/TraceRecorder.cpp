#include "xel/simulation/TraceRecorder.h"

#include <stack>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "xel/simulation/ObservingDisplay.h"

#include "simulation/trace/DelegateTap.h"
#include "simulation/trace/RecordingPlatform.h"
#include "simulation/trace/TraceOutput.h"
#include "simulation/trace/TraceWriter.h"

namespace xel::simulation {
namespace {

void writeNothing(JSONWriter&) {}

/// Writes down what passes between a display and the library.
class DisplayTap final : public DisplayObserver {
 public:
  explicit DisplayTap(std::shared_ptr<TraceWriter> writer) : writer_(std::move(writer)) {}

  void displayWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) override {
    loads_.push(
        writer_->output("loadURL", [&](JSONWriter& line) { writeLoad(line, url, subtitles); }));
  }
  void displayDidLoad() override { loads_.pop(); }

  bool displayWillReport(const DisplayReport& report) override {
    if (const auto* progress = std::get_if<ProgressReport>(&report)) {
      writer_->input("progress", [&](JSONWriter& line) { line.member("time", progress->time); });
    } else if (const auto* texts = std::get_if<MetadataReport>(&report)) {
      writer_->input("metadata",
                     [&](JSONWriter& line) { line.member("metadata", texts->metadata); });
    } else if (const auto* failure = std::get_if<FailureReport>(&report)) {
      writer_->input("failure", [&](JSONWriter& line) { line.member("error", failure->error); });
    } else {
      writer_->input("ready", writeNothing);
    }
    return true;
  }
  void displayDidReport(const DisplayReport&) override {}

 private:
  const std::shared_ptr<TraceWriter> writer_;
  std::stack<TraceWriter::OpenCall> loads_;
};

/// Writes down what a host's delegate hears.
class RecordingTap final : public DelegateTap {
 public:
  RecordingTap(std::shared_ptr<TraceWriter> writer, std::weak_ptr<XELStreamManagerDelegate> host)
      : writer_(std::move(writer)), host_(std::move(host)) {}

 private:
  void take(std::string_view call, const WriteMembers& members, const Forward& forward) override {
    const auto open = writer_->output("delegate", [&](JSONWriter& line) {
      line.name("call").keyword(call);
      members(line);
    });
    if (const auto host = host_.lock()) forward(*host);
  }

  const std::shared_ptr<TraceWriter> writer_;
  const std::weak_ptr<XELStreamManagerDelegate> host_;
};

}  // namespace

struct TraceRecorder::State {
  std::shared_ptr<TraceWriter> writer;
  std::vector<std::shared_ptr<void>> kept;
};

TraceRecorder::TraceRecorder(Sink sink) : TraceRecorder(std::move(sink), Options()) {}

TraceRecorder::TraceRecorder(Sink sink, Options options) : state_(std::make_shared<State>()) {
  state_->writer = std::make_shared<TraceWriter>(std::move(sink), std::move(options));
}

TraceRecorder::~TraceRecorder() { state_->writer->end(); }

Platform TraceRecorder::record(Platform platform) {
  const auto& writer = state_->writer;
  platform.http = recordHTTP(writer, std::move(platform.http));
  platform.mainRunLoop = recordRunLoop(writer, std::move(platform.mainRunLoop));
  platform.environment = recordEnvironment(writer, std::move(platform.environment));
  platform.log = recordLog(writer, std::move(platform.log));
  return platform;
}

std::shared_ptr<XELVideoDisplay> TraceRecorder::record(std::shared_ptr<XELVideoDisplay> display) {
  const auto tap = std::make_shared<DisplayTap>(state_->writer);
  state_->kept.push_back(tap);
  return ObservingDisplay::make(std::move(display), tap);
}

std::weak_ptr<XELStreamManagerDelegate> TraceRecorder::record(
    std::weak_ptr<XELStreamManagerDelegate> host) {
  const auto tap = std::make_shared<RecordingTap>(state_->writer, std::move(host));
  state_->kept.push_back(tap);
  return tap;
}

void TraceRecorder::begin(const std::shared_ptr<XELStreamRequest>& request) {
  state_->writer->begin(request);
}

void TraceRecorder::noteRelease() { state_->writer->input("release", writeNothing); }

void TraceRecorder::noteSeek(double to) {
  state_->writer->note("seek", [&](JSONWriter& line) { line.member("to", to); });
}

void TraceRecorder::notePause() { state_->writer->note("pause", writeNothing); }

void TraceRecorder::noteResume() { state_->writer->note("resume", writeNothing); }

void TraceRecorder::noteMissed(std::uint64_t segments) {
  state_->writer->note("missed", [&](JSONWriter& line) { line.member("segments", segments); });
}

void TraceRecorder::noteEnd(int exitStatus) {
  state_->writer->note("end", [&](JSONWriter& line) { line.member("exitStatus", exitStatus); });
  state_->writer->end();
}

}  // namespace xel::simulation
