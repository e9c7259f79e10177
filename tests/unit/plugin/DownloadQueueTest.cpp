#include <gtest/gtest.h>

#include "plugin/DownloadQueue.h"
#include "tests/unit/plugin/QueueText.h"

namespace plugin {
namespace {

using queue_text::makeItem;

class DownloadQueueTest : public ::testing::Test {
 protected:
  void given(const std::string& text) { queue_.assign(queue_text::makeItems(text)); }
  std::string text() const { return queue_text::textOf(queue_.items()); }

  DownloadQueue::Item& item(const std::string& title) const {
    for (DownloadQueue::Item* const one : queue_.items()) {
      if (queue_text::titleOf(*one) == title) return *one;
    }
    throw std::runtime_error("no item " + title);
  }
  unsigned int id(const std::string& title) const { return item(title).getId(); }

  DownloadQueue queue_;
};

/// An item that counts how many of its kind were deleted.
struct Counted : DownloadItem {
  explicit Counted(int& deletions) : deleted(deletions) {}
  ~Counted() override { ++deleted; }

  int& deleted;
};

TEST(DownloadQueue, DeletesWhatIsRemovedAndTheRestAtItsEnd) {
  int deleted = 0;
  {
    DownloadQueue queue;
    for (int i = 0; i < 4; ++i) queue.add(std::make_unique<Counted>(deleted));
    queue.remove(queue.at(1)->getId());
    EXPECT_EQ(deleted, 1);
    queue.at(0)->setStatus(DownloadStatusCompleted);
    queue.removeIf([](const auto& item) { return item.getStatus() == DownloadStatusCompleted; });
    EXPECT_EQ(deleted, 2);
    queue.moveToBottom(queue.at(0)->getId());
    EXPECT_EQ(deleted, 2);
  }
  EXPECT_EQ(deleted, 4);
}

TEST_F(DownloadQueueTest, HoldsItsItemsInOrder) {
  given("A1 B4");
  EXPECT_EQ(queue_.size(), 2U);
  EXPECT_EQ(queue_.at(0), &item("A"));
  EXPECT_EQ(queue_.at(1), &item("B"));
  EXPECT_EQ(queue_.at(2), nullptr);
  EXPECT_EQ(queue_.find(id("B")), &item("B"));
  EXPECT_EQ(queue_.find(0), nullptr);
}

TEST_F(DownloadQueueTest, AssigningDropsWhatWasThere) {
  given("A1 B1");
  given("C1");
  EXPECT_EQ(text(), "C1");
}

TEST_F(DownloadQueueTest, FindsTheFirstItemWithExactlyThisAddress) {
  given("A1 B1 C1");
  item("B").setUrl(L"http://h/b.avi");
  item("C").setUrl(L"http://h/b.avi");
  EXPECT_EQ(queue_.findUrl(L"http://h/b.avi"), &item("B"));
  EXPECT_EQ(queue_.findUrl(L"http://h/B.avi"), nullptr);
  EXPECT_EQ(queue_.findUrl(L"http://h/b.av"), nullptr);
}

TEST_F(DownloadQueueTest, FindsTheFirstItemWithExactlyThisTicket) {
  given("A1 B1 C1");
  item("B").setTicket("one");
  item("C").setTicket("one");
  EXPECT_EQ(queue_.findTicket("one"), &item("B"));
  EXPECT_EQ(queue_.findTicket("One"), nullptr);
}

TEST_F(DownloadQueueTest, FindsAnItemByItsPathHoweverItIsSpelt) {
  given("A1 B1 C1");
  item("B").setPath(L"/Videos/A.avi");
  item("C").setPath(L"/Videos/A.avi");
  EXPECT_EQ(queue_.findPath(L"/videos/a.AVI"), &item("B"));
  EXPECT_EQ(queue_.findPath(L"/videos/b.avi"), nullptr);
}

TEST_F(DownloadQueueTest, RefusesAProtectedItemWhoseTicketIsQueued) {
  given("A1");
  item("A").setTicket("one");
  const auto other = makeItem("B1");
  other->setTicket("one");
  EXPECT_FALSE(queue_.refuses(*other)) << "it is not protected";
  other->setEncrypted(true);
  EXPECT_TRUE(queue_.refuses(*other)) << "though the queued one is not protected";
  other->setTicket("two");
  EXPECT_FALSE(queue_.refuses(*other));
}

TEST_F(DownloadQueueTest, AddsAboveTheCompletedAndFailedItemsAtTheBottom) {
  struct {
    const char* before;
    const char* after;
  } const cases[] = {
      {"", "N1"},
      {"A1", "A1 N1"},
      {"A1 B4 C6", "A1 N1 B4 C6"},
      {"A4 B6", "N1 A4 B6"},
      {"A4 B1 C6", "A4 B1 N1 C6"},
      {"A5 B4", "A5 N1 B4"},
  };
  for (const auto& one : cases) {
    given(one.before);
    queue_.add(makeItem("N1"));
    EXPECT_EQ(text(), one.after);
  }
}

TEST_F(DownloadQueueTest, MovesOnePlaceUpPastAnything) {
  given("A4 B6 C1");
  EXPECT_TRUE(queue_.moveUp(id("C")));
  EXPECT_EQ(text(), "A4 C1 B6");
  EXPECT_TRUE(queue_.moveUp(id("C")));
  EXPECT_FALSE(queue_.moveUp(id("C")));
  EXPECT_EQ(text(), "C1 A4 B6");
  EXPECT_FALSE(queue_.moveUp(0));
}

TEST_F(DownloadQueueTest, MovesOnePlaceDownButNotIntoTheBottom) {
  given("A1 B5 C6 D4");
  EXPECT_TRUE(queue_.moveDown(id("A")));
  EXPECT_EQ(text(), "B5 A1 C6 D4");
  EXPECT_FALSE(queue_.moveDown(id("A"))) << "above a failed one";
  EXPECT_FALSE(queue_.moveDown(id("C"))) << "above a completed one";
  EXPECT_FALSE(queue_.moveDown(id("D"))) << "at the end";
  EXPECT_FALSE(queue_.moveDown(0));
  EXPECT_EQ(text(), "B5 A1 C6 D4");
}

TEST_F(DownloadQueueTest, MovesToTheBottomPastEverything) {
  given("A4 B1 C6");
  queue_.moveToBottom(id("A"));
  EXPECT_EQ(text(), "B1 C6 A4");
  queue_.moveToBottom(id("A"));
  queue_.moveToBottom(0);
  EXPECT_EQ(text(), "B1 C6 A4");
}

TEST_F(DownloadQueueTest, RemovesByIdAndByProperty) {
  given("A4 B1 C4 D6");
  EXPECT_FALSE(queue_.remove(0));
  EXPECT_TRUE(queue_.remove(id("B")));
  EXPECT_EQ(text(), "A4 C4 D6");
  const auto completed = [](const auto& one) { return one.getStatus() == DownloadStatusCompleted; };
  EXPECT_EQ(queue_.removeIf(completed), 2U);
  EXPECT_EQ(queue_.removeIf(completed), 0U);
  EXPECT_EQ(text(), "D6");
}

TEST_F(DownloadQueueTest, RemovesTheFirstOfTwoWithOneId) {
  given("A1 B1 C1");
  item("C").setId(id("A"));
  EXPECT_TRUE(queue_.remove(id("A")));
  EXPECT_EQ(text(), "B1 C1");
}

TEST_F(DownloadQueueTest, TheFirstCandidateIsNext) {
  struct {
    const char* queue;
    const char* next;
  } const cases[] = {{"A0 B1", "A"},    {"A4 B5 C6 D1", "D"}, {"A6 B2", "B"}, {"A5 B3", "B"},
                     {"A4 B7 C1", "B"}, {"A4 B5 C6", ""},     {"", ""}};
  for (const auto& one : cases) {
    given(one.queue);
    const auto* const next = queue_.nextForDownload();
    EXPECT_EQ(next == nullptr ? "" : queue_text::titleOf(*next), one.next) << one.queue;
  }
}

TEST_F(DownloadQueueTest, ParksTheFirstActiveItemAsPausedAndTheOthersAsQueued) {
  struct {
    const char* before;
    const char* after;
  } const cases[] = {
      {"A3 B1", "A0 B1"},       {"A1 B3 C2", "A1 B0 C1"}, {"A4 B5 C6 D1", "A4 B5 C6 D1"},
      {"A0 B3 C7", "A0 B1 C1"}, {"A2 B0", "A0 B1"},
  };
  for (const auto& one : cases) {
    given(one.before);
    EXPECT_EQ(queue_.park(), std::nullopt) << one.before;
    EXPECT_EQ(text(), one.after);
  }
}

TEST_F(DownloadQueueTest, ParkingTellsTheSessionOfAHeldItemThatComesFirst) {
  given("A1 B7 C7");
  item("B").setUID(31);
  item("C").setUID(32);
  EXPECT_EQ(queue_.park(), 31U);
  EXPECT_EQ(text(), "A1 B0 C1");
}

TEST_F(DownloadQueueTest, RequeuesThePausedAndWhatAStoppedTransferLeftBehind) {
  given("A0 B1 C2 D3 E4 F5 G6 H7");
  queue_.requeue();
  EXPECT_EQ(text(), "A1 B1 C1 D1 E4 F5 G6 H7");
}

TEST(PathMatch, TakesSlashesForTheSeparatorAndCapitalsForSmallLetters) {
  EXPECT_TRUE(isSamePath(L"C:\\Videos\\A.avi", L"c:/videos/a.avi", L'\\'));
  EXPECT_TRUE(isSamePath(L"c:/videos/a.avi", L"C:\\Videos\\A.avi", L'\\'));
}

TEST(PathMatch, LeavesABackslashAloneWhereTheSeparatorIsASlash) {
  EXPECT_FALSE(isSamePath(L"/films\\a.avi", L"/films/a.avi", L'/'));
  EXPECT_TRUE(isSamePath(L"/Films/a\\b.avi", L"/films/A\\B.AVI", L'/'));
}

TEST(PathMatch, ComparesTheWholeLength) {
  EXPECT_FALSE(isSamePath(L"/films/a.avi", L"/films/a.av", L'/'));
  EXPECT_FALSE(isSamePath(L"/films/a.av", L"/films/a.avi", L'/'));
  EXPECT_FALSE(isSamePath(L"", L"/", L'/'));
  EXPECT_TRUE(isSamePath(L"", L"", L'/'));
}

TEST(PathMatch, ComparesCharactersThatHaveNoCase) {
  EXPECT_TRUE(isSamePath(L"/\x65E5\x672C.avi", L"/\x65E5\x672C.AVI", L'/'));
  EXPECT_FALSE(isSamePath(L"/\x65E5.avi", L"/\x672C.avi", L'/'));
}

}  // namespace
}  // namespace plugin
