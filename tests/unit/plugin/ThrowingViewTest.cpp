#include <functional>
#include <stdexcept>
#include <thread>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

/// A view that throws in the middle of an operation, which ends there; the manager goes on.
class ThrowingViewTest : public ManagerFixture {
 protected:
  void begin() {
    startAsleep("A1 B1 C6");
    wakeScheduler();
    transferOf("A");
    await("A3 B1 C6");
  }

  /// At the next change of the list that this thread is told of, or another one.
  void throwOnce(bool onThisThread) {
    view_.onEvent([this, onThisThread, host = std::this_thread::get_id()](const std::string& line) {
      const bool isHere = std::this_thread::get_id() == host;
      if (line != "view.listChanged" || isHere != onThisThread) return;
      view_.onEvent({});
      throw std::runtime_error("a view's own trouble");
    });
  }

  void expectToThrow(const std::function<void()>& operation) {
    throwOnce(true);
    EXPECT_THROW(operation(), std::runtime_error);
    EXPECT_FALSE(manager().isPaused());
  }
};

TEST_F(ThrowingViewTest, AMoveOfTheHeadLeavesNoPauseBehind) {
  begin();
  expectToThrow([this] { manager().moveUp(id("B")); });
  transferOf("B");
  await("B3 A1 C6");
  expectToThrow([this] { manager().moveDown(id("B")); });
  transferOf("A");
  await("A3 B1 C6");
}

TEST_F(ThrowingViewTest, ARetryLeavesNoPauseBehind) {
  begin();
  expectToThrow([this] { manager().retry(id("C")); });
  transferOf("A");
  await("A3 B1 C1");
}

TEST_F(ThrowingViewTest, PlayingLeavesNoPauseBehind) {
  begin();
  expectToThrow([this] { manager().play(id("B")); });
  transferOf("A");
  await("A3 B1 C6");
}

TEST_F(ThrowingViewTest, AFileThatIsOpenedLeavesNoPauseBehind) {
  begin();
  const auto file = folder_.write("media/film.vesk", "ten bytes!");
  const VeskDrmPlaybackAuthorizationResponse response{11, L"Film", "ticket N"};
  expectToThrow([&] { manager().zpsFileOpenedForPlayback(file.wstring(), &response, nullptr); });
  transferOf("A");
  await("A3 B1 C6");
}

TEST_F(ThrowingViewTest, APauseOfTheUserStays) {
  begin();
  throwOnce(true);
  EXPECT_THROW(manager().pause(), std::runtime_error);
  EXPECT_TRUE(manager().isPaused());
  EXPECT_EQ(queue(), "A0 B1 C6");
}

TEST_F(ThrowingViewTest, OperationsAfterwardsAreServed) {
  begin();
  expectToThrow([this] { manager().remove(id("C")); });
  EXPECT_EQ(queue(), "A3 B1");
  std::thread other([this] { EXPECT_TRUE(manager().remove(id("B"))); });
  other.join();
  EXPECT_EQ(queue(), "A3");
}

TEST_F(ThrowingViewTest, APickIsTriedAgain) {
  startAsleep("A1");
  throwOnce(false);
  wakeScheduler();
  transferOf("A");
  await("A3");
}

}  // namespace
