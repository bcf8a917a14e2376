#include "play/ObservingHTTPClient.h"

#include <utility>

namespace xel {

ObservingHTTPClient::ObservingHTTPClient(std::shared_ptr<HTTPClient> client,
                                         std::weak_ptr<RequestObserver> observer,
                                         std::function<double()> now)
    : client_(std::move(client)), observer_(std::move(observer)), now_(std::move(now)) {}

void ObservingHTTPClient::send(HTTPRequest request, Completion completion) {
  if (request.trackingEvent) return sendPing(std::move(request), std::move(completion));
  ++outstanding_->others;
  client_->send(std::move(request), [observer = observer_, outstanding = outstanding_,
                                     completion = std::move(completion)](const HTTPResult& result) {
    --outstanding->others;
    if (completion) completion(result);
    if (const auto target = observer.lock()) target->requestWasAnswered();
  });
}

void ObservingHTTPClient::sendPing(HTTPRequest request, Completion completion) {
  const auto event = *request.trackingEvent;
  const auto url = request.url;
  if (const auto observer = observer_.lock()) observer->pingWillBeSent(event, url);
  ++outstanding_->pings;
  client_->send(std::move(request),
                [observer = observer_, outstanding = outstanding_, now = now_, sentAt = now_(),
                 event, url, completion = std::move(completion)](const HTTPResult& result) {
                  const auto milliseconds = (now() - sentAt) * 1000;
                  --outstanding->pings;
                  if (completion) completion(result);
                  if (const auto target = observer.lock()) {
                    target->pingWasAnswered(event, url, result, milliseconds);
                  }
                });
}

}  // namespace xel
