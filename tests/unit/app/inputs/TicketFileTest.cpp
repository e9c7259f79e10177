#include <gtest/gtest.h>

#include "kvpm/StringTools.h"
#include "playerx/app/inputs/TicketFile.h"
#include "tests/support/TempDir.h"

namespace playerx::inputs {
namespace {

std::string problemOf(const std::filesystem::path& path) {
  reasons::Explanation problem;
  EXPECT_FALSE(readTicketText(kvpm::StringTools::stringToWString(path.string()), &problem));
  return problem.sentence();
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

TEST(TicketFileTest, AProtectedTicketIsKnownByItsFirstLine) {
  for (const wchar_t* text :
       {L"VeskSealedTicket 1", L"VeskSealedTicket 1\nabc", L"VeskSealedTicket 1\r\nabc"}) {
    EXPECT_TRUE(isSealedTicket(text)) << text;
  }
  for (const wchar_t* text : {L"", L"TixVeskVersion=1.0\n", L"VeskSealedTicket 10\n",
                              L" VeskSealedTicket 1\n", L"VeskSealedTicket"}) {
    EXPECT_FALSE(isSealedTicket(text)) << text;
  }
}

TEST(TicketFileTest, AProtectedTicketNeedsTheServices) {
  EXPECT_EQ(refusalOfText(L"VeskSealedTicket 1\nabc", true), std::nullopt);
  EXPECT_EQ(refusalOfText(L"VeskSealedTicket 1\nabc", false),
            reasons::explain(reasons::Reason::kSealedTicket));
}

TEST(TicketFileTest, AClearTicketNeedsNoServices) {
  EXPECT_EQ(refusalOfText(L"TixVeskVersion=1.0\nstart\nurl=http://h/a.avi\nend\n", false),
            std::nullopt);
}

TEST(TicketFileTest, ATicketOfTooManyFilmsIsRefused) {
  std::wstring text = L"TixVeskVersion=1.0\n";
  for (std::size_t i = 0; i < kMostFilms; ++i) text += L"start\nurl=http://h/a.avi\nend\n";
  EXPECT_EQ(refusalOfText(text, false), std::nullopt);
  const auto refusal = refusalOfText(text + L"start\nurl=http://h/a.avi\nend\n", false);
  ASSERT_TRUE(refusal);
  EXPECT_EQ(refusal->sentence(), "This ticket names more than 10000 films.");
}

std::string refusalOfFilmAt(const std::wstring& url) {
  const auto refusal = refusalOfText(
      L"TixVeskVersion=1.0\nstart\nurl=http://h/a.avi\nend\nstart\nurl=" + url + L"\nend\n", false);
  return refusal ? refusal->sentence() : "";
}

TEST(TicketFileTest, AFilmThatCannotBeDownloadedIsNamedWithItsLine) {
  EXPECT_EQ(refusalOfFilmAt(L"http://h/b.avi\r"), "");
  EXPECT_EQ(
      refusalOfFilmAt(L"http://user:word@h/b.avi"),
      "Line 5 of this ticket cannot be used, so nothing of it is added: An address with a user "
      "name or password is not supported; ask the provider for another ticket.");
  for (const wchar_t* url : {L"ftp://h/b.avi", L"file:///b.avi", L"http://[::1]/b.avi", L"b.avi"}) {
    EXPECT_TRUE(refusalOfFilmAt(url).starts_with("Line 5 of this ticket ")) << url;
  }
}

TEST(TicketFileTest, ATextThatIsTooLongIsNamedWithItsLine) {
  const auto refusalOfTitle = [](std::size_t length) {
    const std::wstring title(length, L'x');
    return refusalOfText(
        L"TixVeskVersion=1.0\nstart\ntitle=" + title + L"\nurl=http://h/a.avi\nend", false);
  };
  EXPECT_EQ(refusalOfTitle(kLongestText), std::nullopt);
  const auto refusal = refusalOfTitle(kLongestText + 1);
  ASSERT_TRUE(refusal);
  EXPECT_EQ(refusal->sentence(),
            "The film of line 2 has a text of more than 8192 characters, so nothing of "
            "this ticket is added.");
}

}  // namespace
}  // namespace playerx::inputs
