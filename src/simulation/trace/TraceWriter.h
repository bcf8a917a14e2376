#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "xel/platform/HTTPClient.h"
#include "xel/simulation/JSONWriter.h"
#include "xel/simulation/TraceRecorder.h"

#include "simulation/trace/Redactor.h"

namespace xel::simulation {

/// Writes the lines of one trace, redacted. What belongs to no trace, before it begins and after it
/// ends, is dropped.
class TraceWriter final : public std::enable_shared_from_this<TraceWriter> {
 public:
  using Members = std::function<void(JSONWriter&)>;

  /// A call of the library's that has not returned yet: what it is told meanwhile is written as
  /// happening inside.
  class OpenCall {
   public:
    explicit OpenCall(std::shared_ptr<TraceWriter> writer) : writer_(std::move(writer)) {
      ++writer_->openCalls_;
    }
    ~OpenCall() {
      if (writer_) --writer_->openCalls_;
    }
    OpenCall(OpenCall&&) = default;
    OpenCall& operator=(OpenCall&&) = delete;

   private:
    std::shared_ptr<TraceWriter> writer_;
  };

  TraceWriter(TraceRecorder::Sink sink, TraceRecorder::Options options);

  bool isRecording() const noexcept { return sink_ && hasBegun_; }
  void begin(const std::shared_ptr<XELStreamRequest>& request);
  void end() { sink_ = nullptr; }

  /// Something that is only told.
  void note(std::string_view kind, const Members& members);
  /// Something that the library is about to hear.
  void input(std::string_view kind, const Members& members);
  /// Something that the library does.
  [[nodiscard]] OpenCall output(std::string_view kind, const Members& members);

  /// Numbers a request or a timer; 0 while nothing is recorded.
  std::uint64_t nextID() { return isRecording() ? ++lastID_ : 0; }
  /// Seconds of the steady clock.
  double now() const { return now_(); }
  Redactor& redactor() noexcept { return redactor_; }

 private:
  JSONWriter makeLine();
  void write(std::string_view kind, bool isInput, const Members& members);
  void put(const JSONWriter& line);

  TraceRecorder::Sink sink_;
  const bool redactURLs_;
  const std::function<double()> now_;
  Redactor redactor_;
  bool hasBegun_ = false;
  double begunAt_ = 0;
  std::size_t openCalls_ = 0;
  std::uint64_t lastID_ = 0;
};

}  // namespace xel::simulation
