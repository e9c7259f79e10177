#include "playerx/transfers/Engine.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "playerx/platform/QuietThread.h"

namespace playerx::transfers {
namespace {

constexpr std::chrono::milliseconds kLongestWait{60'000};

/// A network comes in several steps, and with much news.
constexpr std::chrono::milliseconds kSettling{500};

}  // namespace

Engine::Engine(const Tuning& tuning, ReportDelivery& delivery, TrustedAuthorities trust)
    : tuning_(tuning),
      delivery_(delivery),
      trust_(std::move(trust)),
      context_{tuning_,
               delivery_,
               files_,
               loop_,
               [this](Work work) { post(std::move(work)); },
               [this] {
                 const GuardLock lock(mutex_);
                 return trust_;
               }},
      thread_(startQuietThread([this] { run(); })) {}

Engine::~Engine() {
  {
    const GuardLock lock(mutex_);
    isClosing_ = true;
  }
  loop_.wakeUp();
  thread_.join();
}

void Engine::start(std::shared_ptr<Session> session) {
  post([this, session = std::move(session)] { beginSession(session); });
}

void Engine::stop(std::shared_ptr<Session> session) {
  post([this, session = std::move(session)] { endSession(session); });
}

void Engine::confirm(std::shared_ptr<Session> session) {
  session->confirmed = true;  // at once: what is posted at the end may not be done any more
  post([this, session = std::move(session)] { confirmSession(*session); });
}

void Engine::setTrust(const TrustedAuthorities& trust) {
  const GuardLock lock(mutex_);
  trust_ = trust;
}

void Engine::retryNow() {
  post([this] { retryAll(); });
}

void Engine::retryAll() {
  for (const auto& [uid, transfer] : transfers_) transfer->retryNow(Clock::now());
  settleEnded();
}

void Engine::retryWhenDue(Clock::time_point now) {
  if (!retryAt_ || now < *retryAt_) return;
  retryAt_.reset();
  retryAll();
}

void Engine::setRateLimit(std::uint64_t bytesPerSecond) {
  post([this, bytesPerSecond] { loop_.setRateLimit(bytesPerSecond); });
}

void Engine::post(Work work) {
  {
    const GuardLock lock(mutex_);
    posted_.push_back(std::move(work));
  }
  loop_.wakeUp();
}

void Engine::run() {
  while (true) {
    doPosted();
    {
      const GuardLock lock(mutex_);
      if (isClosing_) break;
    }
    loop_.perform();
    const Clock::time_point now = Clock::now();
    retryWhenDue(now);
    workOn(now);
    forgetFinished(now);
    delivery_.flush();
    loop_.wait(timeToWait(now), network_.descriptor());
    if (network_.takeArrival() && !retryAt_) retryAt_ = Clock::now() + kSettling;
  }
  close();
}

void Engine::doPosted() {
  std::deque<Work> posted;
  {
    const GuardLock lock(mutex_);
    posted.swap(posted_);
  }
  for (const Work& work : posted) {
    work();
    settleEnded();
  }
}

void Engine::workOn(Clock::time_point now) {
  for (const auto& [uid, transfer] : transfers_) transfer->work(now);
  settleEnded();
}

// After every step, so that the next one about a session finds it where it belongs.
void Engine::settleEnded() {
  std::erase_if(transfers_, [this](const auto& entry) {
    const Transfer& transfer = *entry.second;
    if (transfer.state() == Transfer::State::kComplete) {
      finished_.push_back({transfer.session(), transfer.film(), Clock::now()});
    }
    return transfer.state() != Transfer::State::kRunning;
  });
}

std::chrono::milliseconds Engine::timeToWait(Clock::time_point now) const {
  std::chrono::milliseconds wait = kLongestWait;
  for (const auto& [uid, transfer] : transfers_) {
    const auto deadline = transfer->deadline();
    if (!deadline) continue;
    wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(*deadline - now));
  }
  if (retryAt_)
    wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(*retryAt_ - now));
  return finished_.empty() ? wait : std::min(wait, timeToForget(now));
}

// A receiver that has not heard of the film yet is given the same time again.
std::chrono::milliseconds Engine::timeToForget(Clock::time_point now) const {
  const Finished& first = finished_.front();
  if (!first.session->announced) return tuning_.forgetAfter;
  return std::chrono::ceil<std::chrono::milliseconds>(first.since + tuning_.forgetAfter - now);
}

void Engine::beginSession(const std::shared_ptr<Session>& session) {
  forgetPlaceOf(session->request);
  if (session->stopped) return session->log.enter(TransferPhase::kStopped);
  auto& transfer = transfers_[session->uid];
  transfer = std::make_unique<Transfer>(session, context_);
  transfer->begin();
}

void Engine::endSession(const std::shared_ptr<Session>& session) {
  if (const auto running = transfers_.find(session->uid); running != transfers_.end()) {
    running->second->stop();
    transfers_.erase(running);
    return;
  }
  // A completion that was never reported is to be found by the next session.
  if (session->announced) return;
  std::erase_if(finished_, [&](const Finished& one) { return one.session == session; });
}

void Engine::confirmSession(const Session& session) {
  const bool isRecent = std::any_of(finished_.begin(), finished_.end(), [&](const Finished& one) {
    return one.session.get() == &session;
  });
  if (!isRecent) removeMark(session.log.report().finalPath);
}

bool Engine::isKnownToQueue(const Session& session) const {
  return awaitsConfirmations_ ? session.confirmed : session.announced;
}

void Engine::forgetFinished(Clock::time_point now) {
  while (!finished_.empty() && finished_.front().session->announced &&
         now - finished_.front().since >= tuning_.forgetAfter) {
    if (isKnownToQueue(*finished_.front().session)) removeMark(finished_.front().film);
    finished_.pop_front();
  }
}

// A rights-managed film is known by its place alone. Under a new address it is requested once more.
void Engine::forgetPlaceOf(const DownloadRequest& request) {
  if (!request.rightsManaged) return;
  std::erase_if(finished_, [&](const Finished& one) {
    const Address& address = one.session->request.address;
    const bool isRequestedAnew = one.session->announced && address.place == request.address.place &&
                                 address != request.address;
    if (isRequestedAnew) removeMark(one.film);
    return isRequestedAnew;
  });
}

void Engine::close() {
  for (const auto& [uid, transfer] : transfers_) {
    transfer->session()->stopped = true;
    transfer->stop();
  }
  transfers_.clear();
  for (const Finished& finished : finished_) {
    if (isKnownToQueue(*finished.session)) removeMark(finished.film);
  }
  finished_.clear();
  delivery_.flush();
}

}  // namespace playerx::transfers
