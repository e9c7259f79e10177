#include <malloc.h>

#include "tests/unit/plugin/AddingFixture.h"

namespace {

class TicketAddingTest : public AddingFixture {
 protected:
  /// What a view is told when a ticket was added.
  const Lines kAdded{"view.itemsAdded", "view.listChanged", "view.listChanged"};
};

TEST_F(TicketAddingTest, AClearTicketGivesItsItemsInOrder) {
  begin("A1 B4");
  const auto added = manager().addTicket(
      clearTicket(
          "start\nurl=http://h/c.avi\ntitle=C\nend\nstart\nurl=http://h/d.avi\ntitle=D\nend\n"),
      false);
  EXPECT_EQ(queue(), "A1 C1 D1 B4");
  EXPECT_EQ(added, (std::vector<Item*>{manager().at(1), manager().at(2)}));
  EXPECT_EQ(notices(), kAdded);
}

TEST_F(TicketAddingTest, DoubleQuotesAroundATicketsNameAreDropped) {
  begin("");
  const std::wstring ticket = clearTicket("start\nurl=http://h/c.avi\ntitle=C\nend\n");
  EXPECT_EQ(manager().addTicket(L"\"" + ticket + L"\"", false).size(), 1U);
  EXPECT_EQ(log_.lines("services."), Lines{"services.readTicket " + support::narrow(ticket)});
}

TEST_F(TicketAddingTest, HoweverManyDoubleQuotesThereAreAtEitherEnd) {
  struct {
    const wchar_t* given;
    const char* used;
  } const cases[] = {{L"\"\"x\"\"", "x"}, {L"\"x", "x"},     {L"x\"", "x"},    {L"\"", ""},
                     {L"\"\"", ""},       {L"x\"y", "x\"y"}, {L" \"x", " \"x"}};
  begin("");
  for (const auto& one : cases) {
    log_.clear();
    manager().addTicket(one.given, false);
    EXPECT_EQ(log_.lines("services."), Lines{std::string("services.readTicket ") + one.used});
  }
}

TEST_F(TicketAddingTest, AClearTicketWithoutItemsGivesNoneButIsAnnouncedAndEndsAPause) {
  begin("A3");
  manager().pause();
  log_.clear();
  EXPECT_TRUE(manager().addTicket(L"/missing.tix", false).empty());
  EXPECT_EQ(queue(), "A1");
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(notices(), kAdded);
}

TEST_F(TicketAddingTest, AClearTicketEndsAPause) {
  begin("A3");
  manager().pause();
  manager().addTicket(clearTicket("start\nurl=http://h/c.avi\ntitle=C\nend\n"), false);
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(queue(), "A1 C1");
}

TEST_F(TicketAddingTest, WithoutOnlineServicesATicketGivesNothingAndNobodyIsTold) {
  begin("A3");
  manager().pause();
  log_.clear();
  forgetFile();
  context_.answer("com.vesk.playerX.pluginInterface.ZPSServices", KPIM::kLoadFailed);
  const std::wstring ticket = clearTicket("start\nurl=http://h/c.avi\nend\n");
  EXPECT_TRUE(manager().addTicket(ticket, false).empty());
  EXPECT_EQ(queue(), "A0");
  EXPECT_TRUE(manager().isPaused());
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
  context_.answer("com.vesk.playerX.pluginInterface.ZPSServices", KPIM::kSuccess);
  EXPECT_EQ(manager().addTicket(ticket, false).size(), 1U) << "they are looked up anew";
}

TEST_F(TicketAddingTest, AProtectedTicketGivesAnItemForEachRecord) {
  begin("A1");
  services_.setTicketRecords({record(L"C", 5), record(L"D", 6)});
  const auto added = manager().addTicket(L"/cd.tix", false);
  ASSERT_EQ(added.size(), 2U);
  EXPECT_EQ(queue(), "A1 C1 D1");
  EXPECT_EQ(added[0], manager().at(1));
  EXPECT_TRUE(added[0]->getEncrypted());
  EXPECT_EQ(added[0]->getTicket(), "ticket C");
  EXPECT_EQ(added[0]->getContentEncryptionUsageId(), 5);
  EXPECT_EQ(notices(), kAdded);
}

TEST_F(TicketAddingTest, TheRecordsOfAProtectedTicketStayTheServices) {
  begin("A1");
  services_.setTicketRecords({record(L"C", 5)});
  VeskDrmTicketData* const handedOut = services_.readTicket(L"").front();
  manager().addTicket(L"/c.tix", false);
  EXPECT_EQ(services_.readTicket(L""), std::vector<VeskDrmTicketData*>{handedOut});
  EXPECT_EQ(handedOut->title, L"C");
}

TEST_F(TicketAddingTest, AProtectedTicketEndsAPause) {
  begin("A3");
  manager().pause();
  services_.setTicketRecords({record(L"B")});
  manager().addTicket(L"/b.tix", false);
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(queue(), "A1 B1");
}

TEST_F(TicketAddingTest, AProtectedTicketReplacesEndedDownloadsOfTheSameContent) {
  begin("A4 B6 C4 D1 E5", [](Item& item) {
    const bool same = item.getTitle() != L"C";
    item.setContentEncryptionUsageId(same ? 5 : 6);
  });
  services_.setTicketRecords({record(L"N", 5)});
  EXPECT_EQ(manager().addTicket(L"/n.tix", false).size(), 1U);
  EXPECT_EQ(queue(), "C4 D1 E5 N1") << "neither other content nor what is still to come";
}

TEST_F(TicketAddingTest, AProtectedTicketReplacesTheEndedDownloadOfTheSameTicketText) {
  for (const char* const ended : {"A4", "A6"}) {
    begin(ended, [](Item& item) { item.setContentEncryptionUsageId(5); });
    services_.setTicketRecords({record(L"A", 5)});
    const auto added = manager().addTicket(L"/a.tix", false);
    EXPECT_EQ(queue(), "A1") << ended;
    EXPECT_EQ(added, std::vector<Item*>{manager().at(0)}) << ended;
    shutDown();
  }
}

TEST_F(TicketAddingTest, AProtectedTicketWithoutUsageIdReplacesEndedPlainDownloads) {
  begin("X4 Y6 Z1", [](Item& item) { item.setEncrypted(false); });
  services_.setTicketRecords({record(L"N", 0)});
  manager().addTicket(L"/n.tix", false);
  EXPECT_EQ(queue(), "Z1 N1");
}

TEST_F(TicketAddingTest, ATicketThatIsQueuedAlreadyIsNotQueuedAgain) {
  begin("A1", [](Item& item) { item.setContentEncryptionUsageId(5); });
  services_.setTicketRecords({record(L"A", 5), record(L"B", 6)});
  const auto added = manager().addTicket(L"/ab.tix", false);
  EXPECT_EQ(queue(), "A1 B1");
  ASSERT_EQ(added.size(), 2U);
  EXPECT_EQ(added[0]->getTitle(), L"A");
  EXPECT_EQ(manager().get(added[0]->getId()), nullptr) << "returned, yet not queued";
  EXPECT_EQ(added[1], manager().at(1));
}

TEST_F(TicketAddingTest, ATicketWhoseItemsAreAllQueuedIsStillAnnouncedAndResumes) {
  begin("A3");
  manager().pause();
  log_.clear();
  services_.setTicketRecords({record(L"A")});
  EXPECT_EQ(manager().addTicket(L"/a.tix", false).size(), 1U);
  EXPECT_EQ(queue(), "A1");
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(notices(), kAdded);
}

TEST_F(TicketAddingTest, AnItemThatWasRefusedLivesUntilTheNextTicket) {
  begin("A1");
  services_.setTicketRecords({record(L"A")});
  Item* const refused = manager().addTicket(L"/a.tix", false).at(0);
  manager().remove(id("A"));
  EXPECT_EQ(refused->getTicket(), "ticket A");
}

TEST_F(TicketAddingTest, ItemsThatWereRefusedDoNotPileUp) {
  constexpr std::size_t kTicketSize = 1'000'000;
  begin("A1", [](Item& item) { item.setTicket(std::string(kTicketSize, 't')); });
  VeskDrmTicketData data = record(L"A");
  data.ticket = std::string(kTicketSize, 't');
  services_.setTicketRecords({data});
  manager().setViewInterface(nullptr);
  const auto held = [] { return mallinfo2().hblkhd + mallinfo2().uordblks; };
  EXPECT_EQ(manager().addTicket(L"/a.tix", false).size(), 1U);
  const std::size_t before = held();
  for (int i = 0; i < 20; ++i) manager().addTicket(L"/a.tix", false);
  EXPECT_LT(held(), before + 5 * kTicketSize);
}

TEST_F(TicketAddingTest, AnUnprotectedItemWithAQueuedTicketTextIsAdded) {
  begin("A1", [](Item& item) { item.setTicket(""); });
  const std::wstring ticket = clearTicket("start\nurl=http://h/c.avi\ntitle=C\nend\n");
  EXPECT_EQ(manager().addTicket(ticket, false).size(), 1U);
  EXPECT_EQ(queue(), "A1 C1");
}

TEST_F(TicketAddingTest, ItsDownloadStarts) {
  given("");
  start();
  services_.setTicketRecords({record(L"A")});
  manager().addTicket(L"/a.tix", true);
  transferOf("A");
  await("A3");
}

}  // namespace
