#include <gtest/gtest.h>

#include "kvpm/StringTools.h"
#include "playerx/app/inputs/TicketFile.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

std::string problemOf(const std::filesystem::path& path) {
  std::string problem;
  EXPECT_FALSE(readTicketText(kvpm::StringTools::stringToWString(path.string()), &problem));
  return problem;
}

TEST(TicketFileTest, AFileThatIsNotThereIsNamed) {
  const support::TempDir folder;
  const std::filesystem::path path = folder / "none.tix";
  EXPECT_EQ(problemOf(path), "There is no file " + path.string() + ".");
  EXPECT_EQ(problemOf(path / "below.tix"), "There is no file " + path.string() + "/below.tix.");
}

TEST(TicketFileTest, AFolderIsSaidToBeOne) {
  const support::TempDir folder;
  const std::filesystem::path path = folder / "folder.tix";
  std::filesystem::create_directory(path);
  EXPECT_EQ(problemOf(path), path.string() + " is a folder.");
}

TEST(TicketFileTest, AProtectedTicketNeedsTheServices) {
  EXPECT_EQ(refusalOfText(L"VeskSealedTicket 1\nabc", true), std::nullopt);
  EXPECT_EQ(refusalOfText(L"VeskSealedTicket 1\nabc", false),
            (FailureReason{"empty_ticket",
                           "This is a protected ticket; name the online services with "
                           "--services."}));
}

TEST(TicketFileTest, AClearTicketNeedsNoServices) {
  EXPECT_EQ(refusalOfText(L"TixVeskVersion=1.0\nstart\nurl=http://h/a.avi\nend\n", false),
            std::nullopt);
}

TEST(TicketFileTest, ATextThatIsTooLongIsNamedWithItsLine) {
  const std::wstring title(kLongestText + 1, L'x');
  const auto refusal =
      refusalOfText(L"TixVeskVersion=1.0\nstart\ntitle=" + title + L"\nurl=u\nend", false);
  ASSERT_TRUE(refusal);
  EXPECT_EQ(refusal->sentence, "The film of line 2 has a text of more than 8192 characters.");
}

}  // namespace
}  // namespace playerx
