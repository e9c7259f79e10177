#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

#include "kvpm/IRunnable.h"
#include "kvpm/Thread.h"

namespace download {

class RunState;

/// Makes calls that may block for long on a thread of its own, one at a time, so that a stop of the
/// run does not have to wait for them.
///
/// Owner: the worker. `run` and `ask` are called by one thread at a time, the rest by any.
class SideThread : private kvpm::IRunnable {
 public:
  /// `run` is not owned and outlives this object.
  explicit SideThread(RunState& run) : run_(run) {}

  /// Waits for the call under way.
  ~SideThread() override;

  /// Makes `call` once the one under way has ended, and waits for it. Returns false as soon as a
  /// stop is asked for, and when the system has no thread to give. A call that has begun then ends
  /// in its own time; what it holds is released at its end. One that throws has ended too.
  bool run(std::function<void()> call);

  /// As `run`, with the answer of `call`; nullopt if absent.
  template <class Call>
  auto ask(Call call) {
    const auto answer = std::make_shared<std::optional<std::invoke_result_t<Call>>>();
    const bool ended = run([answer, call] { *answer = call(); });
    return ended ? *answer : std::nullopt;
  }

  /// Whether a call is under way. What a call did happens before a false answer.
  bool isBusy() const { return busy_; }

  /// Waits for the call under way.
  void finish();

 private:
  bool start(std::function<void()> call);
  void runThread(kvpm::Thread* thread) override;

  RunState& run_;
  std::function<void()> call_;  // the starter's until `busy_`, then the side thread's
  std::atomic<bool> busy_{false};
  std::unique_ptr<kvpm::Thread> thread_;
};

}  // namespace download
