#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "tests/soak/power/DiskRecord.h"
#include "tests/soak/power/FileRecord.h"
#include "tests/soak/power/MountedDisk.h"
#include "tests/soak/power/PowerCut.h"
#include "tests/soak/power/Versions.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace power_test {
namespace {

namespace fs = std::filesystem;

/// The versions of a file, and when each was in place.
class History {
 public:
  explicit History(const std::string& announcements) {
    std::istringstream lines(announcements);
    unsigned long number = 0;
    for (std::int64_t time = 0; lines >> number >> time;) times_.push_back(time);
  }

  std::size_t size() const { return times_.size(); }

  unsigned long latestAt(std::int64_t time) const {
    return static_cast<unsigned long>(std::upper_bound(times_.begin(), times_.end(), time) -
                                      times_.begin());
  }

  /// The version found must have been the present one at some instant of the last second.
  void expectRecent(unsigned long found, std::int64_t cut) const {
    EXPECT_GE(found, latestAt(cut - kSecond));
    EXPECT_LE(found, latestAt(cut) + 1);  // one may be in its place that was not announced yet
  }

 private:
  std::vector<std::int64_t> times_;
};

/// The version that a host reads; 0 for no file, nothing for anything but a whole version.
std::optional<unsigned long> versionIn(const fs::path& path) {
  kvpm::File file;
  const int error =
      file.open(kvpm::StringTools::stringToWString(path.string()), kvpm::FileOpenRead);
  if (error == ENOENT) return 0;
  if (error != 0) return std::nullopt;
  std::string content(static_cast<std::size_t>(file.getTotalSize()), '\0');
  if (file.read(content.data(), content.size()) < 0) return std::nullopt;
  const unsigned long version = versionOfContent(content);
  return version == 0 ? std::nullopt : std::optional(version);
}

/// As the system does now and then: sends what is in memory on its way to the disk, waits for
/// nothing, and orders nothing.
class WriteBack {
 public:
  explicit WriteBack(fs::path folder) : folder_(std::move(folder)) {
    thread_ = std::thread([this] {
      std::mt19937 random(7);
      std::uniform_int_distribution<> pause(1, 300);
      while (!isEnding_) {
        startAll();
        std::this_thread::sleep_for(std::chrono::milliseconds(pause(random)));
      }
    });
  }
  ~WriteBack() {
    isEnding_ = true;
    thread_.join();
  }

 private:
  void startAll() const {
    std::error_code gone;
    for (const auto& entry : fs::directory_iterator(folder_, gone)) {
      const int file = ::open(entry.path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
      ::sync_file_range(file, 0, 0, SYNC_FILE_RANGE_WRITE);
      ::close(file);
    }
  }

  const fs::path folder_;
  std::atomic<bool> isEnding_{false};
  std::thread thread_;
};

/// Lets the writer work for some seconds, then kills it.
History write(const fs::path& path, std::map<std::string, std::string> environment) {
  environment.insert(kBeforeTheCut.begin(), kBeforeTheCut.end());
  support::Process writer({{VERSION_WRITER, path.string()}, environment});
  const WriteBack writeBack(path.parent_path());
  const std::int64_t end = now() + 6 * kSecond;
  support::waitFor([&] { return now() > end || !writer.running(); });
  EXPECT_TRUE(writer.running()) << writer.errors();
  writer.send(SIGKILL);
  writer.wait();
  return History(writer.output());
}

TEST(PowerCut, OfADiskLeavesAWholeVersionAtMostASecondOld) {
  if (!mayMount()) return;
  const std::string empty = emptyDisk();
  const support::TempDir folder;
  const RecordedDisk recorded(empty, folder / "recorded");
  const History history = write(folder / "recorded/queue.xml", {});
  const DiskRecord record(recorded.record());
  std::mt19937 random(std::random_device{}());
  for (int cut = 0; cut < cutsToTry(); ++cut) {
    const std::size_t entry = anyEntry(record.size(), random);
    std::string content = empty;
    record.cutAfter(entry, content, random);
    const MountedDisk disk(diskOf(content), folder / "mounted");
    const auto version = versionIn(disk.folder() / "queue.xml");
    ASSERT_TRUE(version) << "cut after " << entry << " of " << record.size();
    history.expectRecent(*version, record.timeOf(entry + 1));
  }
}

TEST(PowerCut, OfFileOperationsLeavesAWholeVersionAtMostASecondOld) {
  const support::TempDir folder;
  if (!mayKeepAttributes(folder.path())) return;
  fs::create_directories(folder / "recorded");
  const History history =
      write(folder / "recorded/queue.xml", recordingIn(folder / "record", folder / "recorded"));
  const FileRecord record(folder / "record");
  std::mt19937 random(std::random_device{}());
  for (int cut = 0; cut < cutsToTry(); ++cut) {
    const std::size_t entry = anyEntry(record.size(), random);
    const support::TempDir image;
    record.cutAfter(entry, image.path(), random);
    const auto version = versionIn(image / "queue.xml");
    ASSERT_TRUE(version) << "cut after " << entry << " of " << record.size();
    history.expectRecent(*version, record.timeOf(entry + 1));
  }
}

}  // namespace
}  // namespace power_test
