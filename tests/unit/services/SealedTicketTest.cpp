#include <gtest/gtest.h>

#include "playerx/services/SealedTicket.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

class SealedTicketTest : public testing::Test {
 protected:
  support::TempDir folder;

  std::optional<std::string> read(const std::string& content) {
    return readSealedTicket(folder.write("t.tix", content).wstring());
  }
};

TEST_F(SealedTicketTest, TheFirstLineTellsASealedTicket) {
  EXPECT_EQ(read("VeskSealedTicket 1\nabc\n"), "VeskSealedTicket 1\nabc\n");
  EXPECT_EQ(read("VeskSealedTicket 1\r\nabc"), "VeskSealedTicket 1\r\nabc");
  EXPECT_EQ(read("VeskSealedTicket 1"), "VeskSealedTicket 1");
}

TEST_F(SealedTicketTest, OtherFilesAreNotSealed) {
  for (const char* content : {"", "TixVeskVersion=1.0\n", "VeskSealedTicket 10\n",
                              " VeskSealedTicket 1\n", "VeskSealedTicket"}) {
    EXPECT_EQ(read(content), std::nullopt) << content;
  }
}

TEST_F(SealedTicketTest, AMissingFileOrAFolderIsNotSealed) {
  EXPECT_EQ(readSealedTicket((folder / "none.tix").wstring()), std::nullopt);
  EXPECT_EQ(readSealedTicket(folder.path().wstring()), std::nullopt);
}

TEST_F(SealedTicketTest, AFileBeyondTheLimitIsNotRead) {
  std::string content = "VeskSealedTicket 1\n";
  content.resize(kMaxSealedTicket, 'x');
  EXPECT_TRUE(read(content));
  EXPECT_FALSE(read(content + "x"));
}

}  // namespace
}  // namespace playerx
