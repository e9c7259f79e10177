// The items that parseClearTicket reads from a file.
#include <gmock/gmock.h>

#include <filesystem>

#include "item/DownloadItem.h"
#include "persistence/TicketParser.h"
#include "tests/support/TempDir.h"
#include "tests/unit/persistence/Items.h"
#include "tests/unit/persistence/Repeated.h"

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ClearTicket : public testing::Test {
 protected:
  std::vector<Fields> readFile(const std::wstring& path) const {
    return takeFields(TicketParser::parseClearTicket(path));
  }
  std::vector<Fields> read(const std::string& content) const {
    return readFile(folder_.write("film.tix", content).wstring());
  }
  const support::TempDir& folder() const { return folder_; }

 private:
  support::TempDir folder_;
};

Fields film(const std::wstring& url, const std::wstring& title, const std::wstring& provider) {
  Fields fields;
  fields.url = url;
  fields.title = title;
  fields.contentProviderDisplayName = provider;
  return fields;
}

/// A film whose address names neither host nor file.
Fields bare(const std::wstring& url) { return film(url, url, L""); }

const std::string kHeader = "TixVeskVersion=1.0\n";

/// A ticket of one block.
std::string block(const std::string& lines) { return kHeader + "start\n" + lines + "\nend\n"; }

TEST_F(ClearTicket, NamesFilmsWithTitleProviderAndUrl) {
  EXPECT_THAT(read("TixVeskVersion=1.0\nstart\nurl=http://h/a.avi\ntitle=A film\n"
                   "contentProvider=Vesk\nend\nstart\nurl=http://h/b.avi\ntitle=B\n"
                   "contentProvider=Other\nend\n"),
              ElementsAre(film(L"http://h/a.avi", L"A film", L"Vesk"),
                          film(L"http://h/b.avi", L"B", L"Other")));
}

TEST_F(ClearTicket, ItemsHaveAllOtherDefaults) {
  Fields expected;
  expected.status = 1;
  expected.title = L"T";
  expected.contentProviderDisplayName = L"P";
  expected.url = L"a";
  const auto file = folder().write("film.tix", block("url=a\ntitle=T\ncontentProvider=P"));
  const auto items = TicketParser::parseClearTicket(file.wstring());
  ASSERT_THAT(items, SizeIs(1));
  const DownloadItem fresh;
  EXPECT_EQ(items[0]->getUID(), fresh.getUID());
  EXPECT_EQ(items[0]->getTicketId(), fresh.getTicketId());
  EXPECT_EQ(items[0]->getSlotNumber(), fresh.getSlotNumber());
  EXPECT_EQ(items[0]->getReadyForProgressivePlayback(), fresh.getReadyForProgressivePlayback());
  EXPECT_EQ(items[0]->getAutoProgressivePlayback(), fresh.getAutoProgressivePlayback());
  EXPECT_EQ(items[0]->getLastProgressUpdateTime(), fresh.getLastProgressUpdateTime());
  EXPECT_EQ(items[0]->getDownloadInfo(), fresh.getDownloadInfo());
  EXPECT_THAT(takeFields(items), ElementsAre(expected));
}

TEST_F(ClearTicket, LineEndsOfAnyKindReadTheSame) {
  const std::string lines[] = {"TixVeskVersion=1.0", "start", "url=a", "title=b", "end"};
  for (const char* lineEnd : {"\n", "\r", "\r\n", "\n\r", "\n\n\n", "\r\n\r\n"}) {
    std::string text;
    for (const std::string& line : lines) text += line + lineEnd;
    EXPECT_THAT(read(text), ElementsAre(film(L"a", L"b", L"")));
  }
}

TEST_F(ClearTicket, TheLastLineNeedsNoEnd) {
  EXPECT_THAT(read(kHeader + "start\nurl=a\nend"), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, BlanksAndBlankLinesDoNotMatter) {
  EXPECT_THAT(read("\n  \n\t TixVeskVersion \t=  1.0 \n\n  start \n\n\turl\t=\ta \n   \n end\t\n"),
              ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, HeaderVersionsThatAreOneAreAccepted) {
  for (const char* header :
       {"TixVeskVersion=1", "TixVeskVersion=1.0", "TixVeskVersion = 1.0", "TixVeskVersion=1.000",
        "TixVeskVersion=1e0", "TixVeskVersion=", "TixVeskVersion=1.00000001"}) {
    EXPECT_THAT(read(std::string(header) + "\nstart\nurl=a\nend\n"), SizeIs(1)) << header;
  }
}

TEST_F(ClearTicket, OtherHeadersGiveNothing) {
  for (const char* header :
       {"TixVeskVersion=2", "TixVeskVersion=1.1", "TixVeskVersion=x", "TixVeskVersion",
        "tixveskversion=1.0", "Version=1.0", "start", "TixVeskVersion=1.0=1.0", "url=a", "end",
        "=1.0", "TixVeskVersion=1.0000002", "TixVeskVersion=-1", "TixVeskVersion=1,0"}) {
    EXPECT_THAT(read(std::string(header) + "\nstart\nurl=a\nend\n"), IsEmpty()) << header;
  }
}

TEST_F(ClearTicket, AnyFirstLineThatEndsInItsEqualsSignIsAcceptedAsWanted) {
  EXPECT_THAT(read("anything=\nstart\nurl=a\nend\n"), SizeIs(1));
}

TEST_F(ClearTicket, AFirstLineOfMixedBlanksIsAHeaderThatDoesNotParse) {
  EXPECT_THAT(read(" \t \nstart\nurl=a\nend\n"), ElementsAre(bare(L"a")));
  EXPECT_THAT(read(" \t \nTixVeskVersion=2\nstart\nurl=a\nend\n"), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, AHeaderWhoseValueIsMixedBlanksDoesNotParse) {
  EXPECT_THAT(read("TixVeskVersion=\t \nstart\nurl=a\nend\n"), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, TheProviderIsTheHostAlsoBeyondAscii) {
  const auto items = read(kHeader + "start\nurl=http://z\xC3\xBCrich.example/x.avi\nend\n");
  ASSERT_THAT(items, SizeIs(1));
  EXPECT_EQ(items[0].contentProviderDisplayName, L"z\u00FCrich.example");
}

TEST_F(ClearTicket, OnlyTheFirstLineIsTheHeader) {
  EXPECT_THAT(read(kHeader + "TixVeskVersion=2\nstart\nurl=a\nend\n"), SizeIs(1));
}

TEST_F(ClearTicket, AnItemOfABlockStillOpenIsAbandoned) {
  EXPECT_THAT(read(kHeader + "start\nurl=a\nstart\nurl=b\nend\n"), ElementsAre(bare(L"b")));
  EXPECT_THAT(read(kHeader + "start\nurl=a\ntitle=t\nstart\nend\n"), IsEmpty());
}

TEST_F(ClearTicket, ABlockThatIsNeverClosedIsNotAdded) {
  EXPECT_THAT(read(kHeader + "start\nurl=a\nend\nstart\nurl=b\n"), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, ABlockLeftOpenDoesNotReachTheNextTicket) {
  EXPECT_THAT(read(kHeader + "start\nurl=a\n"), IsEmpty());
  EXPECT_THAT(read(kHeader + "end\n"), IsEmpty());
  EXPECT_THAT(read(kHeader + "url=b\nend\n"), IsEmpty());
}

TEST_F(ClearTicket, AnEndOutsideABlockIsIgnored) {
  EXPECT_THAT(read(kHeader + "end\nstart\nurl=a\nend\nend\nurl=b\nend\n"), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, ABlockWithoutAUrlIsDropped) {
  EXPECT_THAT(read(block("title=t\ncontentProvider=p")), IsEmpty());
  EXPECT_THAT(read(block("url=")), IsEmpty());
  EXPECT_THAT(read(block("")), IsEmpty());
}

TEST_F(ClearTicket, KeysOutsideABlockAreIgnored) {
  EXPECT_THAT(read(kHeader + "url=x\ntitle=x\nstart\nurl=a\nend\ntitle=y\n"),
              ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, UnknownKeysAreIgnored) {
  EXPECT_THAT(
      read(block("Url=x\nURL=x\nTitle=x\ncontentprovider=x\nsize=5\nstart=1\nend=1\nurl=a")),
      ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, WordsLikeStartAndEndAreUnknown) {
  EXPECT_THAT(read(block("url=a\nStart\nEND\nstart x\nend x\nends")), ElementsAre(bare(L"a")));
  EXPECT_THAT(read(kHeader + "Start\nurl=a\nend\nstart x\nurl=a\nend\n"), IsEmpty());
  EXPECT_THAT(read(kHeader + "start\nurl=a\nEND\nend x\n"), IsEmpty());
}

TEST_F(ClearTicket, TheLastValueOfAKeyCounts) {
  EXPECT_THAT(read(block("url=a\nurl=b\ntitle=c\ntitle=d")), ElementsAre(film(L"b", L"d", L"")));
  EXPECT_THAT(read(block("url=a\nurl=")), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, AValueOfMixedBlanksEmptiesItsField) {
  const std::string blanks = "\t \t ";  // trimmed twice, one of them is left
  EXPECT_THAT(read(block("url=http://h/a\ntitle=T\ncontentProvider=P\ntitle=" + blanks +
                         "\ncontentProvider=" + blanks)),
              ElementsAre(film(L"http://h/a", L"a", L"h")));
  EXPECT_THAT(read(block("url=a\nurl=" + blanks)), IsEmpty());
  EXPECT_THAT(read(block("url=a\nurl=\t ")), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, AValueMayHoldEqualsSigns) {
  EXPECT_THAT(read(block("url=x?a=b\ntitle==")), ElementsAre(film(L"x?a=b", L"=", L"")));
}

TEST_F(ClearTicket, ALineWithoutAnEqualsSignIsItsOwnValueAsWanted) {
  EXPECT_THAT(read(block("url\ntitle")), ElementsAre(film(L"url", L"title", L"")));
}

TEST_F(ClearTicket, AWordThatTheFirstTrimmingExposesCounts) {
  EXPECT_THAT(read(kHeader + " \tstart\n \turl=a\n \tend\n"), ElementsAre(bare(L"a")));
}

TEST_F(ClearTicket, TitleAndProviderComeFromTheUrlWhereTheyAreMissing) {
  EXPECT_THAT(
      read(block("url=http://media.example/a%20b/film.avi")),
      ElementsAre(film(L"http://media.example/a%20b/film.avi", L"film.avi", L"media.example")));
  EXPECT_THAT(read(block("url=https://h:8443/x.avi?token=1")),
              ElementsAre(film(L"https://h:8443/x.avi?token=1", L"x.avi", L"h")));
  EXPECT_THAT(read(block("url=http://h/x.avi\ntitle=T")),
              ElementsAre(film(L"http://h/x.avi", L"T", L"h")));
  EXPECT_THAT(read(block("url=http://h/x.avi\ncontentProvider=P")),
              ElementsAre(film(L"http://h/x.avi", L"x.avi", L"P")));
}

TEST_F(ClearTicket, EscapesOfTheUrlAreUndoneBeforeItsHostIsTaken) {
  EXPECT_THAT(read(block("url=http://a%7Eb/x.avi")),
              ElementsAre(film(L"http://a%7Eb/x.avi", L"x.avi", L"a~b")));
}

TEST_F(ClearTicket, TheTitleFromTheUrlKeepsItsEscapes) {
  EXPECT_THAT(read(block("url=http://h/d/a%20b%23.avi")),
              ElementsAre(film(L"http://h/d/a%20b%23.avi", L"a%20b%23.avi", L"h")));
}

TEST_F(ClearTicket, AUrlWithoutAFileNameLeavesTheTitleEmpty) {
  for (const wchar_t* url : {L"http://h", L"http://h/", L"http://h/films/"}) {
    EXPECT_THAT(read(block("url=" + std::filesystem::path(url).string())),
                ElementsAre(film(url, L"", L"h")));
  }
}

TEST_F(ClearTicket, TheProviderIsTheHostThatParseUriYields) {
  const struct {
    const wchar_t* url;
    const wchar_t* host;
  } rows[] = {
      {L"ftp://host/film.avi", L""},        // another scheme
      {L"ftp://host/http-b.avi", L"host"},  // the scheme's word may stand anywhere
      {L"HTTP://Host:80/a.avi", L"Host"},  {L"http:film.avi", L""},
      {L"http://u:p@h/a.avi", L"u"},  // there is no user before a host
  };
  for (const auto& row : rows) {
    const auto items = read(block("url=" + std::filesystem::path(row.url).string()));
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].contentProviderDisplayName, row.host) << std::filesystem::path(row.url);
  }
}

TEST_F(ClearTicket, TextIsUtf8WithOrWithoutAByteOrderMark) {
  const std::string text = block("url=a\ntitle=\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  const Fields expected = film(L"a", L"\u00E4\u20AC\U0001F600", L"");
  EXPECT_THAT(read(text), ElementsAre(expected));
  EXPECT_THAT(read("\xEF\xBB\xBF" + text), ElementsAre(expected));
}

TEST_F(ClearTicket, MalformedBytesAreReplaced) {
  EXPECT_THAT(read(block("url=a\ntitle=x\xFFy")), ElementsAre(film(L"a", L"x\uFFFDy", L"")));
}

TEST_F(ClearTicket, TheTextEndsAtItsFirstNul) {
  const std::string nul(1, '\0');
  EXPECT_THAT(read(block("url=a") + nul + "start\nurl=b\nend\n"), ElementsAre(bare(L"a")));
  EXPECT_THAT(read(nul + block("url=a")), IsEmpty());
  EXPECT_THAT(read(kHeader + "start\nurl=a" + nul + "\nend\n"), IsEmpty());
}

TEST_F(ClearTicket, ThePathMayStandInDoubleQuotes) {
  const auto path = folder().write("my film.tix", block("url=a")).wstring();
  EXPECT_THAT(readFile(L'"' + path + L'"'), SizeIs(1));
  EXPECT_THAT(readFile(L'"' + path), SizeIs(1));
  EXPECT_THAT(readFile(path + L'"'), SizeIs(1));
  EXPECT_THAT(readFile(L"\"\"\"" + path + L"\"\""), SizeIs(1));
  EXPECT_THAT(readFile(path), SizeIs(1));
}

TEST_F(ClearTicket, AnUnreadableFileGivesNothing) {
  EXPECT_THAT(readFile((folder() / "missing.tix").wstring()), IsEmpty());
  EXPECT_THAT(readFile(folder().path().wstring()), IsEmpty());
  EXPECT_THAT(readFile(L""), IsEmpty());
  EXPECT_THAT(read(""), IsEmpty());
  EXPECT_THAT(read("\n\r \t\n"), IsEmpty());
  EXPECT_THAT(read(kHeader), IsEmpty());
}

TEST_F(ClearTicket, AFileWhoseSizeDoesNotFitThirtyTwoBitsGivesNothing) {
  const auto path = folder().write("huge.tix", block("url=a"));
  std::filesystem::resize_file(path, std::uintmax_t{1} << 32);
  EXPECT_THAT(readFile(path.wstring()), IsEmpty());
}

TEST_F(ClearTicket, NothingIsPrinted) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  readFile((folder() / "missing.tix").wstring());
  read(kHeader + "end\nstart\nurl=\xFF\nend\nstart\nend\n=\nstart");
  read("TixVeskVersion=2");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(ClearTicket, TheFileStays) {
  const std::string text = block("url=a");
  read(text);
  EXPECT_EQ(support::readFile(folder() / "film.tix"), text);
}

TEST_F(ClearTicket, CutAnywhereItGivesTheCompleteFilms) {
  const std::string text = kHeader + "start\nurl=http://h/a\nend\nstart\nurl=http://h/b\nend\n";
  const std::size_t first = text.find("end") + 3;
  const std::size_t second = text.rfind("end") + 3;
  for (std::size_t size = 0; size <= text.size(); ++size) {
    const std::size_t whole = size >= second ? 2 : size >= first ? 1 : 0;
    ASSERT_THAT(read(text.substr(0, size)), SizeIs(whole)) << "cut at " << size;
  }
}

TEST_F(ClearTicket, LinesOfTenMegabytesAreRead) {
  const std::string address = "http://h/" + std::string(10'000'000, 'a');
  const auto items = read(block(std::string(10'000'000, ' ') + "url=" + address));
  ASSERT_THAT(items, SizeIs(1));
  EXPECT_EQ(items[0].url.size(), address.size());
  EXPECT_EQ(items[0].contentProviderDisplayName, L"h");
}

TEST_F(ClearTicket, TenMegabytesWithoutALineEndAreNotATicket) {
  EXPECT_THAT(read(std::string(10'000'000, 'x')), IsEmpty());
  EXPECT_THAT(read(std::string(10'000'000, ' ')), IsEmpty());
}

TEST_F(ClearTicket, AHundredThousandBlocksAreRead) {
  EXPECT_THAT(read(kHeader + repeated("start\nurl=a\nend\n", 100'000)), SizeIs(100'000));
}

TEST_F(ClearTicket, AHundredThousandNestedStartsLeaveOneFilm) {
  EXPECT_THAT(read(kHeader + repeated("start\nurl=a\n", 100'000) + "end\n"),
              ElementsAre(bare(L"a")));
}

}  // namespace
}  // namespace persistence
