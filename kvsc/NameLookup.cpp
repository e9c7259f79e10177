#include "kvsc/NameLookup.h"

#include <strings.h>

#include <algorithm>
#include <csignal>
#include <list>
#include <thread>
#include <utility>

#include "kvpm/Mutex.h"

#if defined(__SANITIZE_THREAD__)
#define KVSC_LOOKUP_ON_OWN_THREAD
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KVSC_LOOKUP_ON_OWN_THREAD
#endif
#endif

namespace kvsc {
namespace {

addrinfo streamHints(int flags) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_protocol = IPPROTO_TCP;
  hints.ai_flags = flags;
  return hints;
}

#ifdef KVSC_LOOKUP_ON_OWN_THREAD

// ThreadSanitizer crashes on threads that the C library starts, so under it the calling thread asks
// the resolver.
class DirectLookup : public NameLookup {
 public:
  explicit DirectLookup(const std::string& host) {
    const addrinfo hints = streamHints(0);
    addrinfo* found = nullptr;
    error_ = getaddrinfo(host.c_str(), nullptr, &hints, &found);
    addresses_.reset(found);
  }

  bool waitFor(std::chrono::milliseconds) override { return true; }

  Addresses take(int* error) override {
    *error = error_;
    return std::move(addresses_);
  }

 private:
  int error_ = 0;
  Addresses addresses_;
};

using SystemLookup = DirectLookup;

#else

constexpr std::chrono::milliseconds kNap{2};

// Everything that the C library refers to while it works on a look-up.
struct Request {
  explicit Request(const std::string& host) : name(host), hints(streamHints(0)) {
    block.ar_name = name.c_str();
    block.ar_request = &hints;
  }
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;
  ~Request() {
    if (block.ar_result != nullptr) freeaddrinfo(block.ar_result);
  }

  bool running() { return gai_error(&block) == EAI_INPROGRESS; }

  const std::string name;
  const addrinfo hints;
  gaicb block{};
};

// Abandoned look-ups that the C library is still working on. Never destroyed: it may work on them
// until the process ends.
class Abandoned {
 public:
  static Abandoned& instance() {
    static auto* const abandoned = new Abandoned;
    return *abandoned;
  }

  void add(std::unique_ptr<Request> request) {
    const kvpm::MutexLock lock(mutex_);
    requests_.push_back(std::move(request));
  }

  void freeFinished() {
    const kvpm::MutexLock lock(mutex_);
    requests_.remove_if([](const auto& request) { return !request->running(); });
  }

 private:
  kvpm::Mutex mutex_;
  std::list<std::unique_ptr<Request> > requests_ KVPM_GUARDED_BY(mutex_);
};

class SystemLookup : public NameLookup {
 public:
  explicit SystemLookup(const std::string& host) : request_(std::make_unique<Request>(host)) {
    Abandoned::instance().freeFinished();
    gaicb* list[] = {&request_->block};
    sigevent silent{};
    silent.sigev_notify = SIGEV_NONE;
    startError_ = getaddrinfo_a(GAI_NOWAIT, list, 1, &silent);
  }

  ~SystemLookup() override {
    if (startError_ != 0 || !request_->running()) return;
    if (gai_cancel(&request_->block) == EAI_NOTCANCELED) {
      Abandoned::instance().add(std::move(request_));
    }
  }

  // The C library's own wait refers to its caller's stack for ever when its limit passes just as
  // the answer comes, and the process ends.
  bool waitFor(std::chrono::milliseconds limit) override {
    if (startError_ != 0) return true;
    const auto end = std::chrono::steady_clock::now() + limit;
    while (request_->running()) {
      if (std::chrono::steady_clock::now() >= end) return false;
      std::this_thread::sleep_for(std::min<std::chrono::milliseconds>(limit, kNap));
    }
    return true;
  }

  Addresses take(int* error) override {
    *error = startError_ != 0 ? startError_ : gai_error(&request_->block);
    return Addresses(std::exchange(request_->block.ar_result, nullptr));
  }

 private:
  std::unique_ptr<Request> request_;
  int startError_ = 0;
};

#endif

}  // namespace

std::unique_ptr<NameLookup> startSystemLookup(const std::string& host) {
  return std::make_unique<SystemLookup>(host);
}

Addresses localhostAddresses(const std::string& host) {
  const bool dotted = host.ends_with('.');
  const std::string name = dotted ? host.substr(0, host.size() - 1) : host;
  if (strcasecmp(name.c_str(), "localhost") != 0) return nullptr;
  Addresses addresses = numericAddress("127.0.0.1");
  if (addresses) addresses->ai_next = numericAddress("::1").release();
  return addresses;
}

Addresses numericAddress(const std::string& host) {
  const addrinfo hints = streamHints(AI_NUMERICHOST);
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return nullptr;
  return Addresses(found);
}

}  // namespace kvsc
