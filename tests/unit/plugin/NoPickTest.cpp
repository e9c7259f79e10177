#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

/// Operations of the host in the middle of which the scheduler must not pick an item.
///
/// `play` tells: inside an operation that keeps the scheduler from picking, it does not wait for
/// the transfer of its item and answers false. Otherwise the transfer begins, and `play` answers
/// true.
class NoPickTest : public ManagerFixture {
 protected:
  /// Plays B once, at the first `notice` that `operation` gives on this thread.
  void expectNoPick(const std::string& notice, const std::function<void()>& operation) {
    begin();
    int notices = 0;
    bool flowed = false;
    view_.onEvent([&, b = id("B"), host = std::this_thread::get_id()](const std::string& line) {
      if (line != notice || std::this_thread::get_id() != host || notices++ > 0) return;
      flowed = manager().play(b);
    });
    operation();
    view_.onEvent({});
    EXPECT_GT(notices, 0);
    EXPECT_FALSE(flowed) << notice;
    shutDown();
  }

 private:
  void begin() {
    given("A1 B1 C6 D4", [](Item& item) { item.setPercentDownloaded(30); });
    start();
    support::waitFor([this] { return queue() == "A3 B1 C6 D4"; });
    ASSERT_EQ(queue(), "A3 B1 C6 D4");
  }
};

TEST_F(NoPickTest, NothingStartsUntilAnItemIsAddedAndTheQueueResumed) {
  expectNoPick("view.listChanged", [this] { manager().add(L"http://h/n.avi", L"N", L"P"); });
}

TEST_F(NoPickTest, NothingStartsWhileAClearTicketIsAdded) {
  const auto ticket =
      folder_.write("n.tix", "TixVeskVersion=1.0\nstart\nurl=http://h/n.avi\nend\n");
  for (const char* const notice : {"view.itemsAdded", "view.listChanged"}) {
    expectNoPick(notice, [&] { manager().addTicket(ticket.wstring(), false); });
  }
}

TEST_F(NoPickTest, NothingStartsWhileAProtectedTicketIsAdded) {
  services_.setTicketRecords({record(L"N"), record(L"M")});
  for (const char* const notice : {"view.itemsAdded", "view.listChanged"}) {
    expectNoPick(notice, [this] { manager().addTicket(L"/n.tix", false); });
  }
}

TEST_F(NoPickTest, NothingStartsWhileAFileIsPutFirst) {
  const auto file = folder_.write("media/film.vesk", "ten bytes!");
  for (const char* const title : {"C", "N"}) {  // of which C is queued
    const VeskDrmPlaybackAuthorizationResponse response{11, L"Film",
                                                        std::string("ticket ") + title};
    const auto open = [&] {
      manager().zpsFileOpenedForPlayback(file.wstring(), &response, nullptr);
    };
    expectNoPick("view.listChanged", open);
    expectNoPick("view.itemsAdded", open);
  }
}

TEST_F(NoPickTest, NothingStartsWhileTheFileOfAnItemIsPutFirst) {
  expectNoPick("view.listChanged",
               [this] { manager().resumeDownloadingFile(mediaFile("B.vesk").wstring()); });
}

TEST_F(NoPickTest, NothingStartsWhileTheCompletedItemsAreCleared) {
  expectNoPick("view.listChanged", [this] { manager().clearCompletedDownloads(); });
}

TEST_F(NoPickTest, NothingStartsWhileAnItemIsRemoved) {
  expectNoPick("view.listChanged", [this] { manager().remove(id("D")); });
}

TEST_F(NoPickTest, NothingStartsWhileAnItemIsRetried) {
  expectNoPick("view.listChanged", [this] { manager().retry(id("C")); });
}

TEST_F(NoPickTest, NothingStartsWhileAnItemMoves) {
  expectNoPick("view.listChanged", [this] { manager().moveUp(id("B")); });
  expectNoPick("view.listChanged", [this] { manager().moveDown(id("A")); });
}

}  // namespace
