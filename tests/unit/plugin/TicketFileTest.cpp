#include "playerx/platform/MoviesFolder.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace {

namespace fs = std::filesystem;

/// What becomes of the file of a ticket that was added.
class TicketFileTest : public ManagerFixture {
 protected:
  TicketFileTest() { playerx::setMoviesFolder((folder_ / "media").wstring()); }
  ~TicketFileTest() override { playerx::setMoviesFolder(L""); }

  void SetUp() override { startAsleep("A1"); }

  void addQuoted(const fs::path& ticket) {
    manager().addTicket(L'"' + ticket.wstring() + L'"', false);
  }
};

TEST_F(TicketFileTest, AProtectedTicketIsUsedUp) {
  const auto ticket = folder_.write("my b.tix", "sealed");
  services_.setTicketRecords({record(L"B", 1), record(L"C", 2)});
  addQuoted(ticket);
  EXPECT_EQ(queue(), "A1 B1 C1");
  EXPECT_FALSE(fs::exists(ticket));
  EXPECT_TRUE(fs::is_empty(folder_ / "media"));
}

TEST_F(TicketFileTest, AClearTicketStays) {
  const std::string text = "TixVeskVersion=1.0\nstart\ntitle=B\nurl=http://h/b.avi\nend\n";
  const auto ticket = folder_.write("my b.tix", text);
  addQuoted(ticket);
  EXPECT_EQ(queue(), "A1 B1");
  EXPECT_EQ(support::readFile(ticket), text);
}

}  // namespace
