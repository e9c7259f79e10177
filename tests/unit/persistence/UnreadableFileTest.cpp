// A file that cannot be read now is protected until it can be read.
#include <fcntl.h>
#include <sys/stat.h>

#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/Limit.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UnreadableFile : public QueueFileFixture {
 protected:
  std::wstring legacy() const { return (folder() / "DownloadQueue.dlq").wstring(); }
  void save() const {
    DownloadManagerPersistence::writeDownloadQueue(path(), Queue({titled(L"two")}).items());
  }
  std::vector<Fields> migrate() const {
    return takeFields(DownloadManagerPersistence::migrateDownloadQueue(legacy(), path()));
  }
  void writeLegacy() const {
    support::LegacyQueueFile legacy;
    legacy.item().text("title", L"one");
    folder().write("DownloadQueue.dlq", legacy.document());
  }

  /// Runs `action` while no file can be opened.
  template <class Action>
  static auto withoutDescriptors(Action action) {
    const Limit files(RLIMIT_NOFILE, 0);
    return action();
  }
};

TEST_F(UnreadableFile, IsLeftAlone) {
  const std::string text = written({titled(L"one")});
  EXPECT_THAT(withoutDescriptors([&] { return read(); }), IsEmpty());
  EXPECT_EQ(content(), text);
  EXPECT_FALSE(exists("downloadmanager.xml.unreadable"));
}

TEST_F(UnreadableFile, IsNotReplaced) {
  const std::string text = written({titled(L"one")});
  EXPECT_THAT(withoutDescriptors([&] { return read(); }), IsEmpty());
  EXPECT_EQ(written({titled(L"two")}), text);
}

TEST_F(UnreadableFile, IsReplacedOnceItWasRead) {
  written({titled(L"one")});
  withoutDescriptors([&] { return read(); });
  EXPECT_THAT(read(), ElementsAre(titled(L"one")));
  written({titled(L"two")});
  EXPECT_THAT(read(), ElementsAre(titled(L"two")));
}

TEST_F(UnreadableFile, IsWrittenAgainOnceItIsGone) {
  written({titled(L"one")});
  withoutDescriptors([&] { return read(); });
  std::filesystem::remove(file());
  written({titled(L"two")});
  EXPECT_THAT(read(), ElementsAre(titled(L"two")));
}

TEST_F(UnreadableFile, MayBeALinkThatLeadsToItself) {
  std::filesystem::create_symlink(file(), file());
  EXPECT_THAT(read(), IsEmpty());
  save();
  EXPECT_TRUE(std::filesystem::is_symlink(file()));
}

TEST_F(UnreadableFile, MayBeAFolder) {
  std::filesystem::create_directory(file());
  EXPECT_THAT(read(), IsEmpty());
  save();
  EXPECT_TRUE(std::filesystem::is_directory(file()));
}

TEST_F(UnreadableFile, MayBeAPipe) {
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  EXPECT_THAT(read(), IsEmpty());
  save();
  EXPECT_TRUE(std::filesystem::is_fifo(file()));
}

TEST_F(UnreadableFile, OfAnEarlierReleaseKeepsTheNewOneFromBeingWritten) {
  writeLegacy();
  EXPECT_THAT(withoutDescriptors([&] { return migrate(); }), IsEmpty());
  save();
  EXPECT_FALSE(exists("downloadmanager.xml"));
  EXPECT_THAT(migrate(), ElementsAre(titled(L"one"))) << "the next start imports it";
  EXPECT_FALSE(exists("DownloadQueue.dlq"));
  EXPECT_THAT(read(), ElementsAre(titled(L"one")));
  EXPECT_FALSE(isProtected());
}

TEST_F(UnreadableFile, IsNotOneThatIsMissing) {
  EXPECT_THAT(withoutDescriptors([&] { return read(); }), IsEmpty());
  save();
  EXPECT_THAT(read(), ElementsAre(titled(L"two")));
}

}  // namespace
}  // namespace persistence
