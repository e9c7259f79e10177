#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <thread>

#include "plugin/AttachedView.h"
#include "tests/support/Gate.h"
#include "tests/support/fakes/FakeView.h"

namespace plugin {
namespace {

class AttachedViewTest : public ::testing::Test {
 protected:
  void tellOfList() {
    attached_.visit([](auto& view) { view.downloadListChanged(); });
  }

  support::EventLog log_;
  support::FakeView view_{log_};
  AttachedView attached_;
};

TEST_F(AttachedViewTest, WithoutAViewNothingIsVisited) {
  tellOfList();
  attached_.attach(&view_);
  attached_.attach(nullptr);
  tellOfList();
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(AttachedViewTest, TheViewThatIsAttachedIsVisited) {
  support::EventLog otherLog;
  support::FakeView other(otherLog);
  attached_.attach(&other);
  attached_.attach(&view_);
  tellOfList();
  EXPECT_EQ(log_.count("view.listChanged"), 1U);
  EXPECT_TRUE(otherLog.lines().empty());
}

TEST_F(AttachedViewTest, VisitsMayBeNested) {
  attached_.attach(&view_);
  attached_.visit([this](auto&) { tellOfList(); });
  attached_.attach(nullptr);
  EXPECT_EQ(log_.count("view.listChanged"), 1U);
}

TEST_F(AttachedViewTest, DetachingWaitsForAVisitOnAnotherThread) {
  support::Gate inside;
  support::Gate goOn;
  std::atomic<bool> left{false};
  attached_.attach(&view_);
  std::thread visitor([&] {
    attached_.visit([&](auto&) {
      inside.open();
      goOn.wait();
      left = true;
    });
  });
  ASSERT_TRUE(inside.wait());
  std::thread other([&] { goOn.open(); });
  attached_.attach(nullptr);
  EXPECT_TRUE(left);
  visitor.join();
  other.join();
}

TEST_F(AttachedViewTest, AVisitMayDetachTheView) {
  attached_.attach(&view_);
  attached_.visit([this](auto&) { attached_.attach(nullptr); });
  tellOfList();
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(AttachedViewTest, AttachingTheSameViewAgainWaitsForNobody) {
  attached_.attach(&view_);
  support::Gate inside;
  support::Gate goOn;
  std::thread visitor([&] {
    attached_.visit([&](auto&) {
      inside.open();
      goOn.wait();
    });
  });
  ASSERT_TRUE(inside.wait());
  attached_.attach(&view_);
  goOn.open();
  visitor.join();
}

TEST_F(AttachedViewTest, AVisitThatThrowsIsOver) {
  attached_.attach(&view_);
  std::thread visitor([this] {
    EXPECT_THROW(attached_.visit([](auto&) { throw std::bad_alloc(); }), std::bad_alloc);
  });
  visitor.join();
  attached_.attach(nullptr);
  tellOfList();
  EXPECT_TRUE(log_.lines().empty());
}

}  // namespace
}  // namespace plugin
