#include <gtest/gtest.h>

#include <filesystem>

#include "persistence/ProtectedFiles.h"
#include "tests/support/TempDir.h"

namespace persistence {
namespace {

class ProtectedFilesTest : public testing::Test {
 protected:
  std::wstring file(const std::string& name) const { return (folder_ / name).wstring(); }

  /// A file that is on the disk.
  std::wstring put(const std::string& name) const {
    folder_.write(name, "content");
    return file(name);
  }

  bool exists(const std::string& name) const { return std::filesystem::exists(folder_ / name); }
  void remove(const std::string& name) const { std::filesystem::remove(folder_ / name); }

  ProtectedFiles files_;

 private:
  support::TempDir folder_;
};

TEST_F(ProtectedFilesTest, AnyOtherFileMayBeReplaced) {
  EXPECT_TRUE(files_.prepareToReplace(put("a")));
  EXPECT_TRUE(exists("a"));
}

TEST_F(ProtectedFilesTest, AFileIsProtectedUntilItHasBeenRead) {
  const std::wstring a = put("a");
  files_.protect(a, a);
  EXPECT_FALSE(files_.prepareToReplace(a));
  EXPECT_TRUE(files_.prepareToReplace(put("b")));
  files_.noteRead(a, false);
  EXPECT_TRUE(files_.prepareToReplace(a));
}

TEST_F(ProtectedFilesTest, AFileIsProtectedUntilItsSourceIsGone) {
  files_.protect(file("a"), put("source"));
  EXPECT_FALSE(files_.prepareToReplace(file("a")));
  remove("source");
  EXPECT_TRUE(files_.prepareToReplace(file("a")));
  put("source");
  EXPECT_TRUE(files_.prepareToReplace(file("a"))) << "what comes later is another file";
}

TEST_F(ProtectedFilesTest, ASourceThatWasReadProtectsNothing) {
  const std::wstring source = put("source");
  files_.protect(source, source);
  files_.protect(file("a"), source);
  files_.noteRead(source, false);
  EXPECT_TRUE(files_.prepareToReplace(source));
  EXPECT_TRUE(files_.prepareToReplace(file("a")));
}

TEST_F(ProtectedFilesTest, AFileThatIsNoQueueIsMovedOnce) {
  files_.noteRead(put("a"), true);
  EXPECT_TRUE(exists("a"));
  EXPECT_TRUE(files_.prepareToReplace(file("a")));
  EXPECT_FALSE(exists("a"));
  EXPECT_TRUE(exists("a.unreadable"));
  EXPECT_TRUE(files_.prepareToReplace(put("a")));
  EXPECT_TRUE(exists("a"));
}

TEST_F(ProtectedFilesTest, AFileThatHasBecomeAQueueIsNotMoved) {
  files_.noteRead(put("a"), true);
  files_.noteRead(file("a"), false);
  EXPECT_TRUE(files_.prepareToReplace(file("a")));
  EXPECT_TRUE(exists("a"));
}

TEST_F(ProtectedFilesTest, AFileThatIsNoQueueButGoneNeedsNoMove) {
  files_.noteRead(put("a"), true);
  remove("a");
  EXPECT_TRUE(files_.prepareToReplace(file("a")));
  EXPECT_FALSE(exists("a.unreadable"));
}

}  // namespace
}  // namespace persistence
