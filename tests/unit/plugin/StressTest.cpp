#include <gtest/gtest.h>

#include <random>
#include <set>

#include "plugin/StatusGroups.h"
#include "tests/unit/plugin/ManagerFixture.h"
#include "tests/unit/plugin/QueueText.h"

namespace {

/// Everything at once: the test's thread is a host that does anything at random, while the library
/// completes, breaks and neglects its sessions on its own thread.
class StressTest : public ManagerFixture {
 protected:
  StressTest() {
    library_.whileStarting([this](unsigned long long uid) { actOut(uid); });
  }

  ~StressTest() override {
    shutDown();
    library_.waitUntilIdle();
  }

  /// Calls `round` with 0, 1, 2...
  static void repeat(const std::function<void(unsigned int)>& round) {
    constexpr unsigned int kRounds = 150;
    for (unsigned int i = 0; i < kRounds; ++i) round(i);
  }

  void begin(unsigned int seed) {
    random_.seed(seed);
    given("A1 B1 C6 D4 E1 F5 G1", [this](Item& item) {
      item.setPercentDownloaded(chance(2) ? 30 : 0);
      item.setContentEncryptionUsageId(pick(3));
    });
    start();
  }

  int pick(int below) { return std::uniform_int_distribution(0, below - 1)(random_); }
  bool chance(int oneIn) { return pick(oneIn) == 0; }

  /// An id that is queued, or was, or never will be.
  unsigned int anyId() {
    auto* const copy = manager().getCopyofQueue();
    const std::size_t place = static_cast<std::size_t>(pick(static_cast<int>(copy->size()) + 1));
    const unsigned int id = place < copy->size() ? (*copy)[place]->getId() : 0;
    manager().deleteCopyOfQueue(copy);
    return id;
  }

  std::wstring anyTitle() { return std::wstring(1, static_cast<wchar_t>(L'A' + pick(10))); }

  void addTicket() {
    services_.setTicketRecords({record(anyTitle(), pick(3)), record(anyTitle(), pick(3))});
    manager().addTicket(L"/any.tix", false);
  }

  void openFile() {
    const auto file = folder_.write("media/opened", "x");
    VeskDrmPlaybackAuthorizationResponse response;
    response.fileSize = 2;
    response.title = anyTitle();
    response.ticket = "ticket " + support::narrow(response.title);
    manager().zpsFileOpenedForPlayback(file.wstring(), &response, nullptr);
  }

  /// One call of the host.
  void act(bool mayPlay) {
    DownloadManager& m = manager();
    switch (pick(mayPlay ? 22 : 20)) {
      case 0:
        return m.pause();
      case 1:
        return m.resume();
      case 2:
        return m.cancel();
      case 3:
        return m.retry(anyId());
      case 4:
        return void(m.moveUp(anyId()));
      case 5:
        return void(m.moveDown(anyId()));
      case 6:
        return m.moveToTop(anyId());
      case 7:
        return m.moveToBottom(anyId());
      case 8:
        return void(chance(2) && m.remove(anyId()));
      case 9:
        return m.clearCompletedDownloads();
      case 10:
        return addTicket();
      case 11:
        return openFile();
      case 12:
        return m.resumeDownloadingFile(mediaFile("E.vesk").wstring());
      case 13:
        return void(m.updateStatus(anyId(), static_cast<DownloadStatusEnumType>(pick(8))));
      case 14:
        return void(m.updateDownloadProgress(anyId(), pick(101)));
      case 15:
        return void(m.setDownloadInfo(anyId(), {}));
      case 16:
        return void(m.updatePath(anyId(), mediaFile("P.vesk").wstring()));
      case 17:
        return m.setViewInterface(chance(2) ? nullptr : &view_);
      case 18:
        return void(m.setTicketId(anyId(), 7));
      case 19:
        return log_.clear();
      default:
        return void(m.play(anyId()));
    }
  }

  void expectOrder() {
    auto* const copy = manager().getCopyofQueue();
    std::set<unsigned int> ids;
    for (const Item* const item : *copy) EXPECT_TRUE(ids.insert(item->getId()).second);
    manager().deleteCopyOfQueue(copy);
  }

  void expectParked() {
    manager().pause();
    auto* const copy = manager().getCopyofQueue();
    for (const Item* const item : *copy) {
      EXPECT_FALSE(plugin::isActive(item->getStatus())) << queue_text::textOf(*copy);
    }
    manager().deleteCopyOfQueue(copy);
  }

 private:
  /// What becomes of a session, by its id.
  void actOut(unsigned long long uid) {
    library_.onOwnThread([this, uid] {
      for (const int percent : {1, 6, 40, 100}) library_.progress(uid, percent);
      if (uid % 4 == 0) library_.broke(uid);
      if (uid % 4 > 1) library_.complete(uid);
    });
  }

  std::mt19937 random_;
};

TEST_F(StressTest, AnyOperationsInAnyOrderLeaveAQueueThatCanBeParked) {
  repeat([this](unsigned int round) {
    SCOPED_TRACE(round);
    begin(round);
    for (int i = 0; i < 40; ++i) act(false);
    expectOrder();
    expectParked();
    shutDown();
    log_.clear();
  });
}

TEST_F(StressTest, PlaybackGoesOnAmongAllOtherOperations) {
  repeat([this](unsigned int round) {
    SCOPED_TRACE(round);
    begin(round);
    for (int i = 0; i < 40; ++i) act(true);
    expectOrder();
    shutDown();
    log_.clear();
  });
}

TEST_F(StressTest, ShuttingDownIsPossibleAtAnyInstant) {
  repeat([this](unsigned int round) {
    SCOPED_TRACE(round);
    begin(round);
    for (int i = pick(6); i > 0; --i) act(false);
    shutDown();
    EXPECT_FALSE(library_.hasCallback());
    log_.clear();
  });
}

}  // namespace
