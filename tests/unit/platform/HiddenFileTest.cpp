#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include "playerx/platform/FileIo.h"
#include "playerx/platform/HiddenFile.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using playerx::HiddenFile;
using support::readFile;
using support::TempDir;

std::optional<HiddenFile> begin(const fs::path& target, const std::string& content) {
  int error = -1;
  HiddenFile file = HiddenFile::create(target, error);
  EXPECT_EQ(error, 0);
  playerx::writeFully(file.descriptor(), content.data(), content.size());
  return file;
}

std::set<std::string> namesIn(const TempDir& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

using Names = std::set<std::string>;

TEST(HiddenFile, LiesBesideTheTargetUntilItReplacesIt) {
  const TempDir folder;
  folder.write("queue.xml", "old");
  auto file = begin(folder / "queue.xml", "new");
  EXPECT_EQ(namesIn(folder).size(), 2U);
  EXPECT_EQ(readFile(folder / "queue.xml"), "old");
  EXPECT_EQ(file->replace(folder / "queue.xml"), 0);
  EXPECT_EQ(namesIn(folder), Names{"queue.xml"});
  EXPECT_EQ(readFile(folder / "queue.xml"), "new");
}

TEST(HiddenFile, IsDeletedWithItsOwner) {
  const TempDir folder;
  folder.write("queue.xml", "old");
  begin(folder / "queue.xml", "new").reset();
  EXPECT_EQ(namesIn(folder), Names{"queue.xml"});
  EXPECT_EQ(readFile(folder / "queue.xml"), "old");
}

TEST(HiddenFile, ClaimsAFreeName) {
  const TempDir folder;
  EXPECT_EQ(begin(folder / "film", "new")->claim(folder / "film"), 0);
  EXPECT_EQ(readFile(folder / "film"), "new");
}

TEST(HiddenFile, DoesNotClaimATakenName) {
  const TempDir folder;
  auto file = begin(folder / "film", "new");
  folder.write("film", "old");
  EXPECT_EQ(file->claim(folder / "film"), EEXIST);
  file.reset();
  EXPECT_EQ(namesIn(folder), Names{"film"});
  EXPECT_EQ(readFile(folder / "film"), "old");
}

TEST(HiddenFile, FailsWhenItsHiddenNameIsGone) {
  const TempDir folder;
  folder.write("queue.xml", "old");
  auto file = begin(folder / "queue.xml", "new");
  for (const std::string& name : namesIn(folder)) {
    if (name != "queue.xml") fs::remove(folder / name);
  }
  EXPECT_EQ(file->replace(folder / "queue.xml"), ENOENT);
  EXPECT_EQ(readFile(folder / "queue.xml"), "old");
}

TEST(Leftovers, OfDeadWritersAreRemoved) {
  const TempDir folder;
  folder.write(".queue.xml.0123456789abcdef.new", "half");
  folder.write(".queue.xml.ffffffffffffffff.new", "");
  playerx::removeLeftovers(folder / "queue.xml");
  EXPECT_EQ(namesIn(folder), Names{});
}

TEST(Leftovers, OfALivingWriterStay) {
  const TempDir folder;
  auto file = begin(folder / "queue.xml", "new");
  playerx::removeLeftovers(folder / "queue.xml");
  EXPECT_EQ(namesIn(folder).size(), 1U);
  EXPECT_EQ(file->replace(folder / "queue.xml"), 0);
}

TEST(Leftovers, DoNotIncludeFilesOfOtherNames) {
  const TempDir folder;
  const Names others = {
      ".other.xml.0123456789abcdef.new",   // of another file
      ".queue.xml.0123456789abcde.new",    // too short
      ".queue.xml.0123456789abcdefa.new",  // too long
      ".queue.xml.0123456789abcdeg.new",   // not a number
      ".queue.xml.0123456789abcdef.old",  "queue.xml.0123456789abcdef.new", "queue.xml",
  };
  for (const std::string& name : others) folder.write(name, "x");
  playerx::removeLeftovers(folder / "queue.xml");
  EXPECT_EQ(namesIn(folder), others);
}

TEST(Leftovers, AFolderOrLinkOfSuchANameStays) {
  const TempDir folder;
  fs::create_directory(folder / ".queue.xml.0123456789abcdef.new");
  fs::create_symlink("nowhere", folder / ".queue.xml.ffffffffffffffff.new");
  playerx::removeLeftovers(folder / "queue.xml");
  EXPECT_EQ(namesIn(folder).size(), 2U);
}

TEST(Leftovers, OfLongNamesAreFoundToo) {
  const TempDir folder;
  const std::string longest = std::string(199, 'n') + "\xC3\xA9" + std::string(54, 'm');
  ASSERT_EQ(longest.size(), 255U);
  auto file = begin(folder / longest, "new");
  ASSERT_EQ(namesIn(folder).size(), 1U);
  const std::string name = *namesIn(folder).begin();
  EXPECT_TRUE(name.starts_with("." + std::string(199, 'n') + "."));
  file.reset();
  folder.write(name, "half");
  playerx::removeLeftovers(folder / longest);
  EXPECT_EQ(namesIn(folder), Names{});
}

TEST(Leftovers, OfAMissingFolderAreNone) {
  const TempDir folder;
  playerx::removeLeftovers(folder / "nowhere" / "queue.xml");
  EXPECT_EQ(namesIn(folder), Names{});
}

}  // namespace
