#include "simulation/trace/ReplayedSession.h"

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "xel/platform/JSONValue.h"

#include "simulation/trace/TraceValues.h"

namespace xel::simulation {
namespace {

template <typename WriteMembers>
std::string membersText(const WriteMembers& write) {
  JSONWriter writer;
  writer.beginObject();
  write(writer);
  return writer.endObject().text();
}

class SilentLog final : public Log {
 public:
  void line(std::string_view) noexcept override {}
};

}  // namespace

class ReplayedSession::Client final : public HTTPClient {
 public:
  explicit Client(ReplayedSession& session) : session_(session) {}

  void send(HTTPRequest request, Completion completion) override {
    session_.hear(TraceOutput::fromRequest(request), [&](std::uint64_t id) {
      if (id > 0) session_.completions_[id] = std::move(completion);
    });
  }

 private:
  ReplayedSession& session_;
};

/// Its timers fire when the trace says so.
class ReplayedSession::Loop final : public RunLoop {
 public:
  explicit Loop(ReplayedSession& session) : session_(session) {}

  void post(std::function<void()> function) override {
    session_.posted_.push_back(std::move(function));
  }
  bool isMain() const override { return true; }

  TimerID every(double seconds, std::function<void()> function) override {
    auto members = membersText([&](JSONWriter& line) { line.member("seconds", seconds); });
    // One that is not recorded never fires.
    TimerID timer = unrecorded;
    session_.hear({"timerSet", "timerSet", std::move(members)}, [&](std::uint64_t id) {
      if (id == 0) return;
      timer = id;
      session_.timers_[id] = std::make_shared<std::function<void()>>(std::move(function));
    });
    return timer;
  }

  void cancel(TimerID timer) override {
    const auto released = session_.timers_.extract(timer);
    auto members = membersText([&](JSONWriter& line) { line.member("id", timer); });
    session_.hear({"timerCancel", "timerCancel", std::move(members)});
  }

 private:
  static constexpr auto unrecorded = std::numeric_limits<TimerID>::max();
  ReplayedSession& session_;
};

class ReplayedSession::Display final : public XELVideoDisplay {
 public:
  explicit Display(ReplayedSession& session) : session_(session) {}

  void loadURL_withSubtitles(const std::string& url,
                             const std::vector<JSONValue>& subtitles) override {
    session_.hear({"loadURL", "loadURL",
                   membersText([&](JSONWriter& line) { writeLoad(line, url, subtitles); })});
  }
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }

 private:
  ReplayedSession& session_;
  std::weak_ptr<XELVideoDisplayDelegate> delegate_;
};

class ReplayedSession::Host final : public DelegateTap {
 public:
  explicit Host(ReplayedSession& session) : session_(session) {}

 private:
  void take(std::string_view call, const WriteMembers& members, const Forward&) override {
    session_.hear({"delegate", std::string(call), membersText([&](JSONWriter& line) {
                     line.member("call", call);
                     members(line);
                   })});
  }

  ReplayedSession& session_;
};

ReplayedSession::ReplayedSession(const JSONValue& header)
    : header_(header),
      display_(std::make_shared<Display>(*this)),
      host_(std::make_shared<Host>(*this)),
      platform_(std::make_unique<ScopedPlatform>(
          Platform{std::make_shared<Client>(*this), std::make_shared<Loop>(*this),
                   readEnvironment(header["environment"]), std::make_shared<SilentLog>(),
                   readServices(header["services"])})) {}

ReplayedSession::~ReplayedSession() {
  // The session must end on the platform that it began on; what waits may own it.
  step_ = nullptr;
  manager_ = nullptr;
  while (!completions_.empty() || !timers_.empty() || !posted_.empty()) {
    const auto completions = std::exchange(completions_, {});
    const auto timers = std::exchange(timers_, {});
    const auto posted = std::exchange(posted_, {});
  }
}

void ReplayedSession::run(TraceStep& step) {
  step_ = &step;
  if (step.input()) {
    tell(*step.input());
  } else if (!manager_) {
    request();
  }
  while (!posted_.empty()) {
    const auto function = std::move(posted_.front());
    posted_.pop_front();
    function();
  }
  while (const auto* const line = step.nextLeftOver()) tell(*line);
}

void ReplayedSession::request() {
  manager_ = XELStreamManager::initWithVideoDisplay(display_);
  manager_->setDelegate(host_);
  manager_->requestStream(readRequest(header_["request"]));
}

void ReplayedSession::tell(const TraceLine& line) {
  const auto& value = line.value;
  const auto id = static_cast<std::uint64_t>(value["id"].integer().value_or(0));
  const auto delegate = display_->delegate();
  if (line.kind == "httpResult") {
    const auto completion = completions_.extract(id);
    if (completion && completion.mapped()) completion.mapped()(readResult(value));
  } else if (line.kind == "timerFire") {
    const auto timer = timers_.find(id);
    if (timer == timers_.end()) return;
    const auto function = timer->second;
    (*function)();
  } else if (line.kind == "release") {
    const auto released = std::exchange(manager_, nullptr);
  } else if (!delegate) {
    return;
  } else if (line.kind == "ready") {
    delegate->videoDisplayIsReadyForPlayback(*display_);
  } else if (line.kind == "progress") {
    const auto time = value["time"].number();
    delegate->videoDisplay_didProgressToTime(
        *display_, time.value_or(std::numeric_limits<double>::quiet_NaN()));
  } else if (line.kind == "metadata") {
    delegate->videoDisplay_didReceiveTimedMetadata(*display_, readMetadata(value["metadata"]));
  } else if (line.kind == "failure") {
    delegate->videoDisplay_didFailWithError(*display_, readError(value["error"]));
  }
}

void ReplayedSession::hear(TraceOutput output, const std::function<void(std::uint64_t)>& accept) {
  if (!step_) return;
  const auto place = step_->take(std::move(output));
  accept(place ? step_->idAt(*place) : 0);
  if (!place) return;
  ++openCalls_;
  while (const auto* const line = step_->nextInside(*place, openCalls_)) tell(*line);
  --openCalls_;
}

}  // namespace xel::simulation
