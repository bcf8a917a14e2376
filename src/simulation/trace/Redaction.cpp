#include "xel/simulation/Redaction.h"

#include "simulation/trace/Redactor.h"
#include "simulation/trace/SessionSecrets.h"

namespace xel::simulation {

struct Redaction::State {
  Redactor redactor = Redactor(false);
};

Redaction::Redaction(const XELStreamRequest& request, const Environment& environment)
    : state_(std::make_unique<State>()) {
  addSecrets(state_->redactor, request);
  state_->redactor.addSecret(environment.advertisingIdentifier());
}

Redaction::~Redaction() = default;

std::string Redaction::operator()(std::string_view text) const {
  return state_->redactor.text(text);
}

}  // namespace xel::simulation
