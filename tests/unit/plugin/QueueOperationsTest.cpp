#include "tests/unit/plugin/ManagerFixture.h"
#include "tests/unit/plugin/QueueText.h"

namespace {

using Lines = std::vector<std::string>;

class QueueOperationsTest : public ManagerFixture {
 protected:
  void begin(const std::string& queue, const Change& change = {}) {
    startAsleep(queue, change);
    forgetFile();
    log_.clear();
  }
};

TEST_F(QueueOperationsTest, LooksItemsUpByIdAddressTicketPathAndPlace) {
  begin("A1 B1");
  item("B").setUrl(L"http://h/b.vesk");
  Item* const b = &item("B");
  EXPECT_EQ(manager().get(b->getId()), b);
  EXPECT_EQ(manager().get(L"http://h/b.vesk"), b);
  EXPECT_EQ(manager().getByTicket("ticket B"), b);
  EXPECT_EQ(manager().getByPath(mediaFile("B.vesk").wstring()), b);
  EXPECT_EQ(manager().at(1), b);
}

TEST_F(QueueOperationsTest, AnItemThatIsNotThereIsNull) {
  begin("A1");
  EXPECT_EQ(manager().get(0U), nullptr);
  EXPECT_EQ(manager().get(L"http://films.example/FILM.vesk"), nullptr);
  EXPECT_EQ(manager().getByTicket("ticket"), nullptr);
  EXPECT_EQ(manager().getByPath(L"/A.vesk"), nullptr);
  EXPECT_EQ(manager().at(1), nullptr);
}

TEST_F(QueueOperationsTest, FindsAPathWhateverTheCaseOfItsLetters) {
  begin("A1");
  manager().updatePath(id("A"), L"/Films/A.vesk");
  EXPECT_EQ(manager().getByPath(L"/films/a.VESK"), &item("A"));
}

TEST_F(QueueOperationsTest, OfPathsThatDifferInTheirCaseAloneTheFirstIsFound) {
  begin("A1 B1");
  manager().updatePath(id("A"), L"/films/x.vesk");
  manager().updatePath(id("B"), L"/Films/X.vesk");
  EXPECT_EQ(manager().getByPath(L"/Films/X.vesk"), &item("A"));
}

TEST_F(QueueOperationsTest, TheFirstOfSeveralIsFound) {
  begin("A1 B1");
  EXPECT_EQ(manager().get(kvpm::StringTools::stringToWString(kFilm)), &item("A"));
}

TEST_F(QueueOperationsTest, ACopyHoldsNewItemsInOrder) {
  begin("A1 B6 C4");
  auto* const copy = manager().getCopyofQueue();
  ASSERT_EQ(copy->size(), 3U);
  EXPECT_EQ(queue_text::textOf(*copy), "A1 B6 C4");
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_NE((*copy)[i], manager().at(i));
    EXPECT_EQ((*copy)[i]->getId(), manager().at(i)->getId());
  }
  manager().deleteCopyOfQueue(copy);
}

TEST_F(QueueOperationsTest, ACopyOutlivesItsQueue) {
  begin("A1");
  auto* const copy = manager().getCopyofQueue();
  manager().remove(id("A"));
  EXPECT_EQ(queue_text::textOf(*copy), "A1");
  manager().deleteCopyOfQueue(copy);
}

TEST_F(QueueOperationsTest, ACopyWithGapsIsDeletedToo) {
  struct Counted : DownloadItem {
    explicit Counted(int& deletions) : deleted(deletions) {}
    ~Counted() override { ++deleted; }
    int& deleted;
  };
  int deleted = 0;
  begin("A1");
  manager().deleteCopyOfQueue(nullptr);
  manager().deleteCopyOfQueue(
      new std::vector<Item*>{nullptr, new Counted(deleted), nullptr, new Counted(deleted)});
  EXPECT_EQ(deleted, 2);
}

TEST_F(QueueOperationsTest, TheVersionsOfItemsTellWhichHaveChanged) {
  begin("A1 B1");
  const auto before = manager().getVersions();
  manager().setPlayable(id("B"), true);
  manager().moveUp(id("B"));
  const auto after = manager().getVersions();
  ASSERT_EQ(after.size(), 2U);
  EXPECT_EQ(after[0].id, id("B"));
  EXPECT_NE(after[0].version, before[1].version);
  EXPECT_EQ(after[1].id, id("A"));
}

TEST_F(QueueOperationsTest, ACopyOfOneItemOutlivesIt) {
  begin("A1");
  const std::unique_ptr<Item> copy(manager().getCopy(id("A")));
  manager().remove(copy->getId());
  EXPECT_EQ(queue_text::titleOf(*copy), "A");
  EXPECT_EQ(manager().getCopy(copy->getId()), nullptr);
}

TEST_F(QueueOperationsTest, ItemsOfEveryStatusCount) {
  begin("A1 B2 C3 D4 E5 F6 G0");
  EXPECT_EQ(manager().getNumberOfVideosInQueue(), 7U);
}

TEST_F(QueueOperationsTest, RemovingDropsTheItemAndAnnouncesTheList) {
  begin("A1 B1");
  EXPECT_TRUE(manager().remove(id("A")));
  EXPECT_EQ(queue(), "B1");
  EXPECT_EQ(notices(), Lines{"view.listChanged"});
  EXPECT_EQ(written(), "B1");
}

TEST_F(QueueOperationsTest, RemovingAnUnknownItemIsFalseAndSilent) {
  begin("A1");
  EXPECT_FALSE(manager().remove(0));
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

TEST_F(QueueOperationsTest, ClearingDropsTheCompletedItemsAndAnnouncesTheListOnce) {
  begin("A4 B1 C4 D6 E5 F4");
  manager().clearCompletedDownloads();
  EXPECT_EQ(queue(), "B1 D6 E5");
  EXPECT_EQ(notices(), Lines{"view.listChanged"});
  EXPECT_EQ(written(), "B1 D6 E5");
}

TEST_F(QueueOperationsTest, ClearingAQueueWithoutCompletedItemsNeitherWritesNorNotifies) {
  begin("A1 B6 C5");
  manager().clearCompletedDownloads();
  EXPECT_EQ(queue(), "A1 B6 C5");
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

}  // namespace
