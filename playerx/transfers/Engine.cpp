#include "playerx/transfers/Engine.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "playerx/platform/QuietThread.h"

namespace playerx::transfers {
namespace {

constexpr std::chrono::milliseconds kLongestWait{60'000};

}  // namespace

Engine::Engine(const Tuning& tuning, ReportDelivery& delivery, TrustedAuthorities trust)
    : tuning_(tuning),
      delivery_(delivery),
      trust_(std::move(trust)),
      workshop_{tuning_,
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

void Engine::setTrust(const TrustedAuthorities& trust) {
  const GuardLock lock(mutex_);
  trust_ = trust;
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
    workOn(now);
    loop_.wait(timeToWait(now));
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

// At once, so that whatever comes next about a session finds it where it belongs.
void Engine::settleEnded() {
  std::erase_if(transfers_, [this](const auto& entry) {
    const Transfer& transfer = *entry.second;
    if (transfer.state() == Transfer::State::kComplete) keepFinished(transfer);
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
  return wait;
}

void Engine::beginSession(const std::shared_ptr<Session>& session) {
  noteOthers(session->wish);
  if (session->stopped) return session->log.enter(TransferPhase::kStopped);
  const auto transfer = std::make_shared<Transfer>(session, workshop_);
  transfers_[session->uid] = transfer;
  transfer->begin();
}

void Engine::endSession(const std::shared_ptr<Session>& session) {
  if (const auto running = transfers_.find(session->uid); running != transfers_.end()) {
    running->second->stop();
    transfers_.erase(running);
    return;
  }
  const auto found = std::find_if(finished_.begin(), finished_.end(),
                                  [&](const Finished& one) { return one.session == session; });
  if (found == finished_.end()) return;
  if (session->announced) note(*found);
  finished_.erase(found);
}

// A partial that was finished anew is remembered for the latest session alone.
void Engine::keepFinished(const Transfer& transfer) {
  const PartPaths& paths = transfer.paths();
  std::erase_if(finished_, [&](const Finished& one) {
    return one.paths.folder == paths.folder && one.paths.key == paths.key;
  });
  finished_.push_back({transfer.session(), paths});
}

void Engine::note(const Finished& finished) {
  notedIn_.insert(finished.paths.folder);
  files_.post([paths = finished.paths] { noteCompletion(paths); });
}

// Whoever begins another film has put the one before on record.
void Engine::noteOthers(const Wish& wish) {
  std::erase_if(finished_, [&](const Finished& one) {
    const bool isOver = one.session->announced && one.session->wish.address != wish.address;
    if (isOver) note(one);
    return isOver;
  });
}

void Engine::close() {
  for (const auto& [uid, transfer] : transfers_) {
    transfer->session()->stopped = true;
    transfer->stop();
  }
  transfers_.clear();
  for (const Finished& finished : finished_) {
    if (finished.session->announced) note(finished);
  }
  finished_.clear();
  for (const std::filesystem::path& folder : notedIn_) {
    files_.post([folder] { forgetNoted(folder); });
  }
}

}  // namespace playerx::transfers
