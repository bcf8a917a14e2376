#include "backends/curl/CompletionBox.h"

#include <utility>

namespace xel {

TransferID CompletionBox::add(HTTPClient::Completion completion) {
  completions_.emplace(++lastID_, std::move(completion));
  return lastID_;
}

void CompletionBox::finish(TransferID id, HTTPResult result) {
  {
    const std::lock_guard lock(mutex_);
    finished_.push_back({id, std::move(result)});
    if (finished_.size() > 1) return;
  }
  loop_.post([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->deliver();
  });
}

void CompletionBox::deliver() {
  {
    const std::lock_guard lock(mutex_);
    for (Finished& finished : finished_) delivering_.push_back(std::move(finished));
    finished_.clear();
  }
  while (!delivering_.empty()) {
    Finished finished = std::move(delivering_.front());
    delivering_.pop_front();
    const auto waiting = completions_.extract(finished.id);
    if (waiting && waiting.mapped()) waiting.mapped()(std::move(finished.result));
  }
}

void CompletionBox::releaseCompletions() {
  // Taken out first: what they release may destroy or call whatever it likes.
  const auto released = std::exchange(completions_, {});
}

}  // namespace xel
