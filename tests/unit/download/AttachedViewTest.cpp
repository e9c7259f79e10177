#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <stdexcept>

#include "download/AttachedView.h"
#include "tests/support/Gate.h"
#include "tests/support/LockWaiter.h"
#include "tests/support/fakes/FakeView.h"

namespace download {
namespace {

using support::Gate;
using testing::IsEmpty;

class AttachedViewTest : public testing::Test {
 protected:
  AttachedViewTest() { attached_.attach(&view_); }

  void notify() {
    attached_.notify([](auto& view) { view.refreshItem(7); });
  }

  int chooseSlot() {
    return attached_.ask([](auto& view) { return view.chooseSlot(L"t", {}); }, -1);
  }

  /// Has calls to the view stay inside it until the gate is opened.
  void holdCalls() {
    view_.onEvent([this](const std::string&) {
      inside_.open();
      leave_.wait();
    });
  }

  support::EventLog log_;
  support::FakeView view_{log_};
  Gate inside_;
  Gate leave_;
  AttachedView attached_;
};

TEST_F(AttachedViewTest, PassesNoticesOn) {
  notify();
  EXPECT_EQ(log_.count("view.refresh 7"), 1u);
}

TEST_F(AttachedViewTest, PassesQuestionsOn) {
  view_.answerSlot(3);
  EXPECT_EQ(chooseSlot(), 3);
}

TEST_F(AttachedViewTest, WithoutAViewDoesNothing) {
  attached_.attach(nullptr);
  notify();
  EXPECT_EQ(chooseSlot(), -1);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(AttachedViewTest, CallsOnlyTheViewThatIsAttachedNow) {
  support::EventLog otherLog;
  support::FakeView other(otherLog);
  attached_.attach(&other);
  notify();
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_EQ(otherLog.count("view.refresh 7"), 1u);
}

TEST_F(AttachedViewTest, AllowsNoticesInsideNotices) {
  attached_.notify([this](auto&) { notify(); });
  attached_.attach(nullptr);
  EXPECT_EQ(log_.count("view.refresh 7"), 1u);
}

TEST_F(AttachedViewTest, WaitsForANoticeOnAnotherThreadBeforeTheViewIsDetached) {
  std::atomic<bool> detached{false};
  holdCalls();
  auto noticing = std::async(std::launch::async, [this] { notify(); });
  ASSERT_TRUE(inside_.wait());
  support::LockWaiter detaching([&] {
    attached_.attach(nullptr);
    detached = true;
  });
  EXPECT_TRUE(detaching.isHeldUp());
  EXPECT_FALSE(detached);
  leave_.open();
  detaching.join();
  noticing.get();
}

TEST_F(AttachedViewTest, DoesNotWaitForNoticesToTheViewThatStays) {
  holdCalls();
  auto noticing = std::async(std::launch::async, [this] { notify(); });
  ASSERT_TRUE(inside_.wait());
  attached_.attach(&view_);
  leave_.open();
  noticing.get();
}

TEST_F(AttachedViewTest, MayBeDetachedFromWithinANotice) {
  view_.onEvent([this](const std::string&) { attached_.attach(nullptr); });
  notify();
  notify();
  EXPECT_EQ(log_.count("view.refresh 7"), 1u);
}

TEST_F(AttachedViewTest, DoesNotWaitForAQuestion) {
  holdCalls();
  auto asking = std::async(std::launch::async, [this] { return chooseSlot(); });
  ASSERT_TRUE(inside_.wait());
  attached_.attach(nullptr);
  leave_.open();
  asking.get();
}

TEST_F(AttachedViewTest, ForgetsANoticeThatThrew) {
  auto noticing = std::async(std::launch::async, [this] {
    EXPECT_THROW(attached_.notify([](auto&) { throw std::runtime_error("no"); }),
                 std::runtime_error);
  });
  noticing.get();
  attached_.attach(nullptr);
}

}  // namespace
}  // namespace download
