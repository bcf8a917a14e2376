#include "xel/simulation/CannedAdServer.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <limits>
#include <utility>

namespace xel::simulation {
CannedAdServer::CannedAdServer(std::shared_ptr<VirtualRunLoop> loop)
    : loop_(std::move(loop)),
      otherDocuments_{404},
      otherPings_{204},
      outstanding_(std::make_shared<Outstanding>()) {}

CannedAdServer::~CannedAdServer() { clear(); }

void CannedAdServer::answer(std::string url, CannedAnswer answer) {
  scripts_[std::move(url)].outcomes.push_back({std::nullopt, std::move(answer)});
}

void CannedAdServer::fail(std::string url, TransferError error, double delay) {
  scripts_[std::move(url)].outcomes.push_back({error, {0, {}, delay}});
}

void CannedAdServer::hang(std::string url) {
  fail(std::move(url), TransferError::timedOut, std::numeric_limits<double>::infinity());
}

void CannedAdServer::forget(const std::string& url) { scripts_.erase(url); }

void CannedAdServer::answerOtherDocuments(CannedAnswer answer) {
  otherDocuments_ = std::move(answer);
}

void CannedAdServer::answerOtherPings(CannedAnswer answer) { otherPings_ = std::move(answer); }

std::vector<CannedAdServer::Sent> CannedAdServer::pings() const {
  std::vector<Sent> pings;
  std::copy_if(requests_.begin(), requests_.end(), std::back_inserter(pings),
               [](const Sent& sent) { return sent.request.trackingEvent.has_value(); });
  return pings;
}

std::size_t CannedAdServer::outstanding() const noexcept { return outstanding_->size(); }

void CannedAdServer::clear() {
  // Releasing a completion may send again.
  while (!outstanding_->empty()) const Outstanding released = std::exchange(*outstanding_, {});
}

void CannedAdServer::send(HTTPRequest request, Completion completion) {
  Outcome outcome = nextOutcome(request);
  const double timeout =
      std::chrono::duration<double>(request.timeout.value_or(defaultTimeout)).count();
  if (outcome.answer.delay > timeout) outcome = {TransferError::timedOut, {0, {}, timeout}};

  HTTPResult result;
  if (outcome.error) {
    const auto refusal = request.refusal();
    result.error =
        makeTransferError(*outcome.error, refusal.value_or("The canned transfer failed."));
  } else {
    result.response.status = outcome.answer.status;
    if (!request.trackingEvent) result.response.body = std::move(outcome.answer.body);
  }

  const std::uint64_t number = requests_.size();
  requests_.push_back({std::move(request), loop_->now()});
  outstanding_->emplace(number, std::move(completion));
  loop_->after(outcome.answer.delay, [outstanding = std::weak_ptr(outstanding_), number,
                                      result = std::move(result)]() mutable {
    const auto entries = outstanding.lock();
    if (!entries) return;
    const auto entry = entries->extract(number);
    if (entry && entry.mapped()) entry.mapped()(std::move(result));
  });
}

CannedAdServer::Outcome CannedAdServer::nextOutcome(const HTTPRequest& request) {
  if (request.refusal()) return {TransferError::invalidRequest, {}};
  const auto found = scripts_.find(request.url);
  if (found == scripts_.end()) {
    return {std::nullopt, request.trackingEvent ? otherPings_ : otherDocuments_};
  }
  Script& script = found->second;
  script.used = std::min(script.used + 1, script.outcomes.size());
  return script.outcomes[script.used - 1];
}

}  // namespace xel::simulation
