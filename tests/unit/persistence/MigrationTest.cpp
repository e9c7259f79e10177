// An earlier release's queue is imported, and its file deleted last.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace {

/// Called before each sync of this thread; returns an error number or 0.
thread_local std::function<int()> onSync;

int syncBy(long call, int file) {
  errno = onSync ? onSync() : 0;
  return errno != 0 ? -1 : static_cast<int>(syscall(call, file));
}

}  // namespace

extern "C" int fsync(int file) { return syncBy(SYS_fsync, file); }
extern "C" int fdatasync(int file) { return syncBy(SYS_fdatasync, file); }

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Migration : public QueueFileFixture {
 protected:
  ~Migration() override { onSync = nullptr; }

  std::filesystem::path legacy() const { return folder() / "DownloadQueue.dlq"; }
  void writeLegacy() const {
    support::LegacyQueueFile legacy;
    legacy.item().text("title", L"one");
    support::writeFile(this->legacy(), legacy.document());
  }
  std::vector<Fields> migrate() const {
    return takeFields(DownloadManagerPersistence::migrateDownloadQueue(legacy().wstring(), path()));
  }
};

TEST_F(Migration, ImportsTheQueue) {
  writeLegacy();
  EXPECT_THAT(migrate(), ElementsAre(titled(L"one")));
  EXPECT_THAT(read(), ElementsAre(titled(L"one")));
  EXPECT_FALSE(std::filesystem::exists(legacy()));
}

TEST_F(Migration, DeletesTheEarlierFileOnceTheNewOneIsOnTheDisk) {
  writeLegacy();
  int syncs = 0;
  onSync = [&] {
    ++syncs;
    EXPECT_TRUE(std::filesystem::exists(legacy()));
    return 0;
  };
  migrate();
  EXPECT_GT(syncs, 0);
  EXPECT_FALSE(std::filesystem::exists(legacy()));
}

TEST_F(Migration, KeepsTheEarlierFileWhenTheNewOneDoesNotReachTheDisk) {
  writeLegacy();
  onSync = [] { return EIO; };
  EXPECT_THAT(migrate(), ElementsAre(titled(L"one")));
  EXPECT_TRUE(std::filesystem::exists(legacy()));
}

TEST_F(Migration, WithoutAnEarlierFileDoesNotWaitForTheDisk) {
  onSync = [] {
    ADD_FAILURE() << "synced";
    return 0;
  };
  EXPECT_THAT(migrate(), IsEmpty());
  EXPECT_EQ(content().size(), 56U);
}

TEST_F(Migration, IsNotHeldUpByAFolderThatHasTheEarlierFilesName) {
  std::filesystem::create_directory(legacy());
  EXPECT_THAT(migrate(), IsEmpty());
  EXPECT_EQ(content().size(), 56U);
  EXPECT_TRUE(std::filesystem::is_directory(legacy()));
}

}  // namespace
}  // namespace persistence
