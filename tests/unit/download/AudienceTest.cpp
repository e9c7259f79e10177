#include <gmock/gmock.h>

#include <future>

#include "download/Audience.h"
#include "tests/support/Gate.h"
#include "tests/support/fakes/FakeManager.h"
#include "tests/support/fakes/FakeView.h"

namespace download {
namespace {

using support::Gate;

class AudienceOfTwo : public testing::Test {
 protected:
  AudienceOfTwo() { audience_.set(&manager_, &view_); }

  void notify() {
    audience_.notify([](auto& view) { view.refreshItem(7); });
  }

  support::EventLog log_;
  support::FakeManager manager_{log_};
  support::FakeView view_{log_};
  Audience audience_;
};

TEST_F(AudienceOfTwo, HearsReportsAndNotices) {
  audience_.report([](auto& manager) { manager.setPlayable(7, true); });
  notify();
  EXPECT_THAT(log_.lines(), testing::ElementsAre("manager.setPlayable 7 true", "view.refresh 7"));
}

TEST_F(AudienceOfTwo, MayBeEmpty) {
  audience_.set(nullptr, nullptr);
  audience_.report([](auto& manager) { manager.setPlayable(7, true); });
  notify();
  EXPECT_THAT(log_.lines(), testing::IsEmpty());
  EXPECT_EQ(audience_.presentManager(), nullptr);
}

TEST_F(AudienceOfTwo, AnswersQuestions) {
  view_.answerSlot(3);
  const auto choose = [](auto& view) { return view.chooseSlot(L"t", {}); };
  EXPECT_EQ(audience_.ask(choose, -1), 3);
  audience_.set(&manager_, nullptr);
  EXPECT_EQ(audience_.ask(choose, -1), -1);
}

TEST_F(AudienceOfTwo, LetsAViewGoOnlyAfterItsNotice) {
  Gate inside;
  Gate leave;
  std::atomic<bool> left{false};
  view_.onEvent([&](const std::string&) {
    inside.open();
    leave.wait();
    left = true;
  });
  auto noticing = std::async(std::launch::async, [this] { notify(); });
  ASSERT_TRUE(inside.wait());
  auto detaching = std::async(std::launch::async, [&] {
    audience_.set(&manager_, nullptr);
    return left.load();
  });
  leave.open();
  EXPECT_TRUE(detaching.get());
  noticing.get();
}

TEST_F(AudienceOfTwo, DoesNotWaitForNoticesOfTheViewThatStays) {
  Gate inside;
  Gate leave;
  view_.onEvent([&](const std::string&) {
    inside.open();
    leave.wait();
  });
  auto noticing = std::async(std::launch::async, [this] { notify(); });
  ASSERT_TRUE(inside.wait());
  audience_.set(&manager_, &view_);
  leave.open();
  noticing.get();
}

TEST_F(AudienceOfTwo, MayBeLeftFromWithinANotice) {
  view_.onEvent([this](const std::string&) { audience_.set(&manager_, nullptr); });
  notify();
  notify();
  EXPECT_EQ(log_.count("view.refresh 7"), 1u);
}

TEST_F(AudienceOfTwo, DoesNotWaitForAQuestion) {
  Gate inside;
  Gate leave;
  view_.onEvent([&](const std::string&) {
    inside.open();
    leave.wait();
  });
  auto asking = std::async(std::launch::async, [this] {
    return audience_.ask([](auto& view) { return view.chooseSlot(L"t", {}); }, -1);
  });
  ASSERT_TRUE(inside.wait());
  audience_.set(&manager_, nullptr);
  leave.open();
  asking.get();
}

}  // namespace
}  // namespace download
