// The items that processEncryptedTicket makes of decoded records, and the fate of the ticket file.
#include <gmock/gmock.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <memory>
#include <vector>

#include "persistence/TicketParser.h"
#include "persistence/TicketParserImpl.h"
#include "playerx/platform/MoviesFolder.h"
#include "tests/support/TempDir.h"
#include "tests/support/UniqueFd.h"
#include "tests/unit/persistence/Items.h"

namespace persistence {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class EncryptedTicket : public testing::Test {
 protected:
  EncryptedTicket() {
    fs::create_directory(movies());
    playerx::setMoviesFolder(movies().wstring());
  }
  ~EncryptedTicket() override { playerx::setMoviesFolder(L""); }

  fs::path movies() const { return folder_ / "Movies"; }
  fs::path ticket() const { return folder_.write("Ticket.tix", "sealed"); }
  const support::TempDir& folder() const { return folder_; }

  std::wstring pathOf(const std::wstring& title) const { return movies().wstring() + L"/" + title; }

  std::vector<Fields> process(std::vector<VeskDrmTicketData> records, const fs::path& ticket) {
    std::vector<VeskDrmTicketData*> pointers;
    for (VeskDrmTicketData& record : records) pointers.push_back(&record);
    return takeFields(TicketParser::processEncryptedTicket(pointers, ticket.wstring()));
  }

 private:
  support::TempDir folder_;
};

VeskDrmTicketData record(const std::wstring& title) {
  return {"sealed " + std::string(1, static_cast<char>(0xFF)), title, 42, L"Vesk", "2.0"};
}

TEST_F(EncryptedTicket, ARecordBecomesAQueuedProtectedItem) {
  Fields expected;
  expected.contentEncryptionUsageId = 42;
  expected.filePath = pathOf(L"Summer.vesk");
  expected.status = 1;
  expected.title = L"Summer";
  expected.ticket = "sealed \xFF";
  expected.contentProviderDisplayName = L"Vesk";
  expected.encrypted = true;
  EXPECT_THAT(process({record(L"Summer")}, ticket()), ElementsAre(expected));
}

TEST_F(EncryptedTicket, ItemsHaveAllOtherDefaults) {
  VeskDrmTicketData data = record(L"Summer");
  const std::vector<VeskDrmTicketData*> records{&data};
  const std::vector<VeskPlayerX::DownloadItemInterface*> items =
      TicketParser::processEncryptedTicket(records, ticket().wstring());
  ASSERT_THAT(items, SizeIs(1));
  const std::unique_ptr<VeskPlayerX::DownloadItemInterface> item(items.front());
  EXPECT_EQ(item->getUID(), 0U);
  EXPECT_EQ(item->getUrl(), L"");
  EXPECT_EQ(item->getSize(), 0U);
  EXPECT_EQ(item->getPercentDownloaded(), 0);
  EXPECT_EQ(item->getTicketId(), 0);
  EXPECT_FALSE(item->getTicketAlreadyTorn());
  EXPECT_EQ(item->getSlotNumber(), -1);
  EXPECT_FALSE(item->getReadyForProgressivePlayback());
  EXPECT_FALSE(item->getAutoProgressivePlayback());
  EXPECT_EQ(item->getTimeRemaining(), 0U);
}

TEST_F(EncryptedTicket, NegativeUsageIdsAndTicketsWithNulAreKept) {
  VeskDrmTicketData data = record(L"Summer");
  data.contentEncryptionUsageId = INT_MIN;
  data.ticket = std::string("a\0b\0", 4);
  const auto items = process({data}, ticket());
  ASSERT_THAT(items, SizeIs(1));
  EXPECT_EQ(items[0].contentEncryptionUsageId, INT_MIN);
  EXPECT_EQ(items[0].ticket, data.ticket);
}

TEST_F(EncryptedTicket, TheTitleIsNotTrimmed) {
  const auto items = process({record(L" \tSummer ")}, ticket());
  ASSERT_THAT(items, SizeIs(1));
  EXPECT_EQ(items[0].title, L" \tSummer ");
  EXPECT_EQ(items[0].filePath, pathOf(L" \tSummer .vesk"));
}

TEST_F(EncryptedTicket, ItemsComeInRecordOrder) {
  const auto items = process({record(L"one"), record(L"two"), record(L"three")}, ticket());
  ASSERT_THAT(items, SizeIs(3));
  EXPECT_EQ(items[0].title, L"one");
  EXPECT_EQ(items[2].title, L"three");
}

TEST_F(EncryptedTicket, TheVersionOfARecordHasNoEffect) {
  for (const char* version : {"", "2.0", "2.1", "3.0"}) {
    VeskDrmTicketData each = record(L"Summer");
    each.version = version;
    const auto items = process({each}, ticket());
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].filePath, pathOf(L"Summer.vesk"));
  }
}

TEST_F(EncryptedTicket, EqualTitlesShareAPath) {
  const auto items = process({record(L"Summer"), record(L"Summer")}, ticket());
  ASSERT_THAT(items, SizeIs(2));
  EXPECT_EQ(items[0].filePath, items[1].filePath);
}

TEST_F(EncryptedTicket, AFilmThatIsThereDoesNotChangeThePath) {
  support::writeFile(movies() / "Summer.vesk", "a film");
  const auto items = process({record(L"Summer")}, ticket());
  ASSERT_THAT(items, SizeIs(1));
  EXPECT_EQ(items[0].filePath, pathOf(L"Summer.vesk"));
  EXPECT_EQ(items[0].fileSize, 0U);
  EXPECT_EQ(support::readFile(movies() / "Summer.vesk"), "a film");
}

TEST_F(EncryptedTicket, SeparatorsInATitleLeadToOtherFolders) {
  const auto items = process({record(L"a/b"), record(L"a\\b"), record(L"../c:?*")}, ticket());
  ASSERT_THAT(items, SizeIs(3));
  EXPECT_EQ(items[0].filePath, pathOf(L"a/b.vesk"));
  EXPECT_EQ(items[1].filePath, pathOf(L"a/b.vesk"));
  EXPECT_EQ(items[2].filePath, pathOf(L"../c:?*.vesk"));
}

TEST_F(EncryptedTicket, ABackslashInTheMoviesFolderIsReplacedToo) {
  playerx::setMoviesFolder(L"C:\\films\\new");
  const VeskDrmTicketData data = record(L"Summer");
  EXPECT_EQ(TicketParser::TicketParserImpl::getLocalFilePathFromTicketData(&data),
            L"C:/films/new/Summer.vesk");
}

TEST_F(EncryptedTicket, TheLocalPathOfARecordCanBeAskedForAlone) {
  const VeskDrmTicketData data = record(L"x\\y");
  EXPECT_EQ(TicketParser::TicketParserImpl::getLocalFilePathFromTicketData(&data),
            pathOf(L"x/y.vesk"));
}

TEST_F(EncryptedTicket, TheTicketFileIsConsumed) {
  process({record(L"Summer"), record(L"Winter")}, ticket());
  EXPECT_FALSE(fs::exists(folder() / "Ticket.tix"));
  EXPECT_TRUE(fs::is_empty(movies()));
}

TEST_F(EncryptedTicket, TheTicketIsConsumedEvenWhereItCannotBeMoved) {
  process({record(L"missing/folder")}, ticket());
  EXPECT_FALSE(fs::exists(folder() / "Ticket.tix"));
  EXPECT_TRUE(fs::is_empty(movies()));
}

TEST_F(EncryptedTicket, TheMoviesFolderIsNotCreated) {
  const auto file = ticket();
  fs::remove(movies());
  EXPECT_THAT(process({record(L"Summer")}, file), SizeIs(1));
  EXPECT_FALSE(fs::exists(movies()));
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(EncryptedTicket, AFileOfTheTicketsNameBesideTheFilmsStays) {
  support::writeFile(movies() / "Summer.tix", "another ticket");
  process({record(L"Summer")}, ticket());
  EXPECT_EQ(support::readFile(movies() / "Summer.tix"), "another ticket");
  EXPECT_FALSE(fs::exists(folder() / "Ticket.tix"));
}

TEST_F(EncryptedTicket, ATicketAlreadyBesideTheFilmsIsConsumedThere) {
  support::writeFile(movies() / "Summer.tix", "sealed");
  process({record(L"Summer")}, movies() / "Summer.tix");
  EXPECT_TRUE(fs::is_empty(movies()));
}

/// Records which files are moved into or out of a folder.
class MoveWatch {
 public:
  explicit MoveWatch(const fs::path& folder) : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    inotify_add_watch(events_.get(), folder.c_str(), IN_MOVE);
  }

  std::vector<std::string> moved() const {
    alignas(inotify_event) char buffer[4096];
    std::vector<std::string> names;
    const ssize_t size = ::read(events_.get(), buffer, sizeof buffer);
    for (ssize_t at = 0; at < size;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      names.emplace_back(event->name);
      at += static_cast<ssize_t>(sizeof *event + event->len);
    }
    return names;
  }

 private:
  support::UniqueFd events_;
};

TEST_F(EncryptedTicket, TheTicketIsMovedBesideTheFilmsUnderTheFirstTitle) {
  const auto file = ticket();
  const MoveWatch watch(movies());
  process({record(L"Summer"), record(L"Winter")}, file);
  EXPECT_THAT(watch.moved(), ElementsAre("Summer.tix"));
}

TEST_F(EncryptedTicket, TheTicketIsMovedUnderTheUnchangedTitle) {
  for (const char* title : {" \tSummer ", "a:b?*", "a\\b"}) {
    const auto file = ticket();
    const MoveWatch watch(movies());
    process({record(fs::path(title).wstring())}, file);
    EXPECT_THAT(watch.moved(), ElementsAre(std::string(title) + ".tix"));
  }
}

TEST_F(EncryptedTicket, LettersBeyondAsciiAreComparedWithoutCaseToo) {
  support::writeFile(movies() / "\xC3\xA4RGER \xD0\x96.tix", "sealed");
  VeskDrmTicketData data = record(L"\u00C4rger \u0436");
  const MoveWatch watch(movies());
  takeFields(TicketParser::processEncryptedTicket({&data}, pathOf(L"\u00E4RGER \u0416.tix")));
  EXPECT_THAT(watch.moved(), IsEmpty());
  EXPECT_TRUE(fs::is_empty(movies()));
}

TEST_F(EncryptedTicket, ATicketAlreadyThereIsNotMovedWhateverItsCaseOrSeparators) {
  const std::wstring folder = movies().wstring();
  for (const std::wstring& path :
       {folder + L"/Summer.tix", folder + L"/SUMMER.TIX", folder + L"/sUMMER.tix"}) {
    support::writeFile(path, "sealed");
    const MoveWatch watch(movies());
    process({record(L"Summer")}, path);
    EXPECT_THAT(watch.moved(), IsEmpty());
    EXPECT_FALSE(fs::exists(path));
  }
}

TEST_F(EncryptedTicket, ABackslashInItsPathCountsAsASeparator) {
  fs::create_directory(movies() / "a");
  support::writeFile(movies() / "a\\b.tix", "sealed");
  const MoveWatch watch(movies());
  process({record(L"a/b")}, movies() / "a\\b.tix");
  EXPECT_THAT(watch.moved(), IsEmpty());
}

TEST_F(EncryptedTicket, ABackslashInItsFirstTitleCountsAsASeparator) {
  fs::create_directory(movies() / "a");
  support::writeFile(movies() / "a/b.tix", "sealed");
  const MoveWatch watch(movies() / "a");
  process({record(L"a\\b")}, movies() / "a/b.tix");
  EXPECT_THAT(watch.moved(), IsEmpty());
  EXPECT_FALSE(fs::exists(movies() / "a/b.tix"));
}

TEST_F(EncryptedTicket, DoubleQuotesAroundThePathAreIgnored) {
  const auto items = process({record(L"Summer")}, L'"' + ticket().wstring() + L'"');
  EXPECT_THAT(items, SizeIs(1));
  EXPECT_FALSE(fs::exists(folder() / "Ticket.tix"));
}

TEST_F(EncryptedTicket, WithoutRecordsTheTicketStays) {
  EXPECT_THAT(process({}, ticket()), IsEmpty());
  EXPECT_EQ(support::readFile(folder() / "Ticket.tix"), "sealed");
}

TEST_F(EncryptedTicket, NullRecordsAreSkipped) {
  VeskDrmTicketData data = record(L"Summer");
  const auto file = ticket();
  EXPECT_THAT(
      takeFields(TicketParser::processEncryptedTicket({nullptr, &data, nullptr}, file.wstring())),
      SizeIs(1));
  const auto other = ticket();
  EXPECT_THAT(takeFields(TicketParser::processEncryptedTicket({nullptr}, other.wstring())),
              IsEmpty());
  EXPECT_TRUE(fs::exists(other));
}

TEST_F(EncryptedTicket, AMissingTicketFileDoesNotMatter) {
  EXPECT_THAT(process({record(L"Summer")}, folder() / "missing.tix"), SizeIs(1));
}

TEST_F(EncryptedTicket, AFolderIsNeverDeleted) {
  fs::create_directory(folder() / "Films");
  process({record(L"x/y")}, folder() / "Films");
  EXPECT_TRUE(fs::is_directory(folder() / "Films"));
}

}  // namespace
}  // namespace persistence
