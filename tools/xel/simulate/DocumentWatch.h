#pragma once

#include <functional>
#include <memory>
#include <string>

#include "xel/platform/HTTPClient.h"
#include "xel/platform/JSONValue.h"

namespace xel::simulate {

/// An HTTP client that tells of pings, and of the documents that the library takes, as requests
/// pass through it.
class DocumentWatch final : public HTTPClient {
 public:
  struct Observer {
    std::function<void(const HTTPRequest& ping)> pingSent;
    /// Before the library has it.
    std::function<void(const JSONValue& document)> documentArrived;
    /// A request for the document ended without one that can be used; `problem` says why.
    std::function<void(const std::string& problem)> documentFailed;
  };

  DocumentWatch(std::shared_ptr<HTTPClient> client, std::string documentURL, Observer observer);

  void send(HTTPRequest request, Completion completion) override;

 private:
  void tell(const HTTPResult& result) const;

  const std::shared_ptr<HTTPClient> client_;
  const std::string documentURL_;
  const Observer observer_;
};

}  // namespace xel::simulate
