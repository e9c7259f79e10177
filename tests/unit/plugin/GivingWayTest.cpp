#include <atomic>
#include <functional>
#include <thread>
#include <tuple>

#include "VeskPlayerX/InterfaceIds.h"
#include "tests/support/Gate.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace {

/// What a view calls in the middle of a notice; answers whether it was served, as far as that can
/// be seen.
struct ViewCall {
  const char* name;
  std::function<bool(DownloadManager&, unsigned int second, unsigned int failed)> run;
};

/// An operation of the host that waits for the thread of such a notice.
struct HostCall {
  const char* name;
  std::function<void(DownloadManager&, unsigned int second)> run;
};

enum class NoticeOn { kScheduler, kLibrary };

class NoticeFixture : public ManagerFixture {
 protected:
  ~NoticeFixture() override {
    view_.onEvent({});
    shutDown();
    library_.waitUntilIdle();
  }

  /// Runs `action` once, at the next notice on another thread than this one.
  void onBackgroundNotice(const std::function<void()>& action) {
    view_.onEvent([this, action, host = std::this_thread::get_id()](const std::string& line) {
      if (std::this_thread::get_id() == host || !line.starts_with("view.itemChanged")) return;
      view_.onEvent({});
      action();
    });
  }

  /// Has that notice come.
  void provokeNotice(NoticeOn thread) {
    if (thread == NoticeOn::kScheduler) {
      wakeScheduler();  // the worker reports on the scheduler's thread that the item is starting
    } else {
      library_.onOwnThread([this] { library_.progress(uid_, 50); });
    }
  }

  void begin(NoticeOn thread) {
    startAsleep("A1 B1 X1 C6", [](Item& item) { item.setPercentDownloaded(30); });
    second_ = id("B");
    failed_ = id("C");
    if (thread == NoticeOn::kScheduler) return;
    wakeScheduler();
    uid_ = transferOf("A");
    await("A3 B1 X1 C6");
  }

  support::Gate noticing_;
  support::Gate hostHasTheLock_;
  support::Gate answered_;
  unsigned int second_ = 0;
  unsigned int failed_ = 0;
  unsigned long long uid_ = 0;
};

/// The host holds the operation lock while it waits for a thread on which a view calls an operation
/// that needs this lock: waiting for each other would never end.
class GivingWayTest
    : public NoticeFixture,
      public ::testing::WithParamInterface<std::tuple<HostCall, ViewCall, NoticeOn>> {
 protected:
  /// On this thread, from inside an operation that holds the lock.
  void callFromTheHost() {
    const unsigned int x = id("X");
    view_.onEvent([this, host = std::this_thread::get_id()](const std::string&) {
      if (std::this_thread::get_id() != host) return;
      view_.onEvent({});
      hostHasTheLock_.open();
      std::get<HostCall>(GetParam()).run(manager(), second_);
    });
    manager().remove(x);
  }
};

TEST_P(GivingWayTest, TheCallOfTheViewDoesNotHoldTheHostUp) {
  const NoticeOn thread = std::get<NoticeOn>(GetParam());
  std::atomic<bool> served{true};
  begin(thread);
  onBackgroundNotice([&] {
    noticing_.open();
    hostHasTheLock_.wait();
    served = std::get<ViewCall>(GetParam()).run(manager(), second_, failed_);
    answered_.open();
  });
  provokeNotice(thread);
  ASSERT_TRUE(noticing_.wait());
  callFromTheHost();
  ASSERT_TRUE(answered_.wait());
  EXPECT_FALSE(served);
}

using Manager = DownloadManager;
INSTANTIATE_TEST_SUITE_P(
    Of, GivingWayTest,
    ::testing::Combine(
        ::testing::Values(HostCall{"Pause", [](Manager& m, auto) { m.pause(); }},
                          HostCall{"Cancel", [](Manager& m, auto) { m.cancel(); }},
                          HostCall{"Move", [](Manager& m, auto second) { m.moveUp(second); }},
                          HostCall{"Shutdown", [](Manager& m, auto) { m.Shutdown(); }},
                          HostCall{"Detach",
                                   [](Manager& m, auto) { m.setViewInterface(nullptr); }}),
        ::testing::Values(
            ViewCall{"Pausing", [](Manager& m, auto, auto) { return m.pause(), false; }},
            ViewCall{"Retrying",
                     [](Manager& m, auto, auto failed) { return m.retry(failed), false; }},
            ViewCall{"Moving", [](Manager& m, auto second, auto) { return m.moveUp(second); }},
            ViewCall{"Removing", [](Manager& m, auto second, auto) { return m.remove(second); }},
            ViewCall{"Playing", [](Manager& m, auto second, auto) { return m.play(second); }},
            ViewCall{"Adding", [](Manager& m, auto,
                                  auto) { return m.add(L"http://h/n.avi", L"", L"") != nullptr; }},
            ViewCall{"AddingATicket", [](Manager& m, auto,
                                         auto) { return !m.addTicket(L"/n.tix", false).empty(); }}),
        ::testing::Values(NoticeOn::kScheduler, NoticeOn::kLibrary)),
    [](const auto& test) {
      const bool isLibrary = std::get<NoticeOn>(test.param) == NoticeOn::kLibrary;
      return std::string(std::get<ViewCall>(test.param).name) + "On" +
             (isLibrary ? "TheLibrary" : "TheScheduler") + "During" +
             std::get<HostCall>(test.param).name;
    });

/// A view that calls an operation on a background thread, with no other thread in its way.
class BackgroundCallTest : public NoticeFixture, public ::testing::WithParamInterface<NoticeOn> {
 protected:
  void callAtNotice(const std::function<void()>& call) {
    begin(GetParam());
    onBackgroundNotice([&] {
      call();
      answered_.open();
    });
    provokeNotice(GetParam());
    ASSERT_TRUE(answered_.wait());
  }
};

TEST_P(BackgroundCallTest, IsServed) {
  std::atomic<bool> moved{false};
  callAtNotice([&] { moved = manager().moveUp(second_); });
  EXPECT_TRUE(moved);
  await("B3 A1 X1 C6");
}

TEST_P(BackgroundCallTest, PlayingAnItemThatDoesNotFlowYetIsFalseAtOnce) {
  std::atomic<bool> played{true};
  callAtNotice([&] { played = manager().play(second_); });
  EXPECT_FALSE(played);
  EXPECT_TRUE(log_.lines("player.").empty());
  await("B3 A1 X1 C6");
}

TEST_P(BackgroundCallTest, PlayingACompleteItemIsServed) {
  std::atomic<bool> played{false};
  callAtNotice([&] {
    manager().updateStatus(second_, DownloadStatusCompleted);
    played = manager().play(second_);
  });
  EXPECT_TRUE(played);
}

INSTANTIATE_TEST_SUITE_P(On, BackgroundCallTest,
                         ::testing::Values(NoticeOn::kScheduler, NoticeOn::kLibrary),
                         [](const auto& test) {
                           return test.param == NoticeOn::kLibrary ? "TheLibrary" : "TheScheduler";
                         });

}  // namespace
