#include "simulate/DocumentWatch.h"

#include <utility>

namespace xel::simulate {

DocumentWatch::DocumentWatch(std::shared_ptr<HTTPClient> client, std::string documentURL,
                             Observer observer)
    : client_(std::move(client)),
      documentURL_(std::move(documentURL)),
      observer_(std::move(observer)) {}

/// The client lives as long as the simulation, and so longer than its requests.
void DocumentWatch::send(HTTPRequest request, Completion completion) {
  if (request.trackingEvent) observer_.pingSent(request);
  if (request.url != documentURL_) return client_->send(std::move(request), std::move(completion));
  client_->send(std::move(request), [this, completion = std::move(completion)](HTTPResult result) {
    tell(result);
    completion(std::move(result));
  });
}

void DocumentWatch::tell(const HTTPResult& result) const {
  if (result.error) return observer_.documentFailed(result.error->description);
  if (result.response.status >= 400) {
    return observer_.documentFailed("HTTP status " + std::to_string(result.response.status));
  }
  const auto parsed = JSONValue::parse(result.response.body);
  if (parsed.error) return observer_.documentFailed(parsed.error->description);
  if (!parsed.value.isObject()) return observer_.documentFailed("it is not a JSON object");
  observer_.documentArrived(parsed.value);
}

}  // namespace xel::simulate
