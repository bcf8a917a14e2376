#include "backends/curl/CurlThread.h"

#include <csignal>
#include <system_error>
#include <utility>

#include <pthread.h>
#include <unistd.h>

#include "backends/curl/LiveThreads.h"

namespace xel {
namespace {

/// Blocks all signals on the calling thread, and so on the threads that it starts: signals are
/// the host's business, and one for a broken pipe would end the process.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &earlier_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &earlier_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t earlier_{};
};

}  // namespace

CurlThread::CurlThread(CurlSettings settings, CompletionBox& results) : process_(getpid()) {
  if (!LiveThreads::add(*this)) {
    stopping_ = true;
    return;
  }
  const SignalsBlocked blocked;
  try {
    scheduler_ = std::make_unique<CurlScheduler>(std::move(settings), results);
    thread_ = std::thread(&CurlThread::run, this);
  } catch (const std::system_error& error) {
    scheduler_.reset();
    stopping_ = true;
    whyNotStarted_ = std::string("The client could not start: ") + error.what();
  }
}

CurlThread::~CurlThread() {
  LiveThreads::remove(*this);
  stop();
}

bool CurlThread::submit(CurlJob job) {
  const std::lock_guard lock(mutex_);
  if (stopping_) return false;
  submitted_.push_back(std::move(job));
  if (std::exchange(waiting_, false)) scheduler_->wakeUp();
  return true;
}

std::shared_ptr<const Error> CurlThread::reasonAgainst() const {
  if (!whyNotStarted_.empty()) return makeTransferError(TransferError::unknown, whyNotStarted_);
  return makeTransferError(TransferError::cancelled, "The client has ended.");
}

void CurlThread::stop() {
  if (!thread_.joinable()) return;
  if (getpid() != process_) {
    abandon();
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    scheduler_->wakeUp();
  }
  thread_.join();
}

void CurlThread::abandon() {
  // To release it would close the parent's connections.
  static auto& abandoned = *new std::vector<std::unique_ptr<CurlScheduler>>;
  abandoned.push_back(std::move(scheduler_));
  // Forgotten without a word to the system, which may have given its identifier to another by now.
  std::construct_at(&thread_);
}

void CurlThread::run() {
  while (takeJobs()) {
    if (!scheduler_->advance() && mayWait()) scheduler_->wait();
  }
  // Closing connections writes to them, which is this thread's business.
  scheduler_.reset();
}

bool CurlThread::mayWait() {
  const std::lock_guard lock(mutex_);
  return waiting_ = submitted_.empty() && !stopping_;
}

bool CurlThread::takeJobs() {
  std::deque<CurlJob> jobs;
  {
    const std::lock_guard lock(mutex_);
    waiting_ = false;
    if (stopping_) return false;
    jobs.swap(submitted_);
  }
  for (CurlJob& job : jobs) scheduler_->add(std::move(job));
  return true;
}

}  // namespace xel
