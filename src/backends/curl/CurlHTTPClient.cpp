#include "backends/curl/CurlHTTPClient.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "backends/curl/CompletionBox.h"
#include "backends/curl/CurlThread.h"

namespace xel {
namespace {

std::chrono::steady_clock::time_point deadlineOf(const HTTPRequest& request) {
  using namespace std::chrono_literals;
  // libcurl counts milliseconds in a long, which may have 32 bits.
  constexpr std::chrono::milliseconds longest = 24h * 24;
  const auto timeout = request.timeout.value_or(HTTPClient::defaultTimeout);
  return std::chrono::steady_clock::now() + std::clamp(timeout, 0ms, longest);
}

class CurlHTTPClient final : public HTTPClient {
 public:
  CurlHTTPClient(CurlSettings settings, std::shared_ptr<RunLoop> loop)
      : loop_(std::move(loop)),
        box_(std::make_shared<CompletionBox>(*loop_)),
        thread_(std::move(settings), *box_) {}

  ~CurlHTTPClient() override {
    thread_.stop();
    box_->releaseCompletions();
  }

  void send(HTTPRequest request, Completion completion) override {
    const TransferID id = box_->add(std::move(completion));
    const auto deadline = deadlineOf(request);
    if (!thread_.submit({id, std::move(request), deadline})) {
      box_->finish(id, {thread_.reasonAgainst(), {}});
    }
  }

 private:
  const std::shared_ptr<RunLoop> loop_;
  const std::shared_ptr<CompletionBox> box_;
  CurlThread thread_;
};

}  // namespace

std::shared_ptr<HTTPClient> makeCurlHTTPClient(CurlSettings settings,
                                               std::shared_ptr<RunLoop> mainRunLoop) {
  return std::make_shared<CurlHTTPClient>(std::move(settings), std::move(mainRunLoop));
}

}  // namespace xel
