#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "playerx/framework/PluginCatalog.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using playerx::PluginCatalog;
using playerx::readPluginCatalog;
using support::TempDir;

std::string description(const std::string& id, const std::string& version = "1.0") {
  return R"({"id": ")" + id + R"(", "version": ")" + version +
         R"(", "interfaces": ["film"], "library": "lib.so"})";
}

std::vector<std::string> ids(const PluginCatalog& catalog) {
  std::vector<std::string> result;
  for (const auto& found : catalog.descriptions) result.push_back(found.info.id);
  return result;
}

using Ids = std::vector<std::string>;

TEST(PluginCatalog, HoldsTheDescriptionsOfAllFoldersInOrder) {
  const TempDir folder;
  folder.write("one/b.json", description("b"));
  folder.write("one/a.json", description("a"));
  folder.write("two/0.json", description("c"));
  const PluginCatalog catalog = readPluginCatalog({folder / "one", folder / "two"});
  EXPECT_EQ(ids(catalog), (Ids{"a", "b", "c"}));
  EXPECT_TRUE(catalog.problems.empty());
  EXPECT_EQ(catalog.descriptions[2].library, folder / "two" / "lib.so");
}

TEST(PluginCatalog, FilesOfOtherNamesAreNoDescriptions) {
  const TempDir folder;
  folder.write("a.json", description("a"));
  folder.write("b.json.bak", "nonsense");
  folder.write("c.so", "nonsense");
  folder.write("json", "nonsense");
  fs::create_directory(folder / "d.json");
  const PluginCatalog catalog = readPluginCatalog({folder.path()});
  EXPECT_EQ(ids(catalog), Ids{"a"});
  EXPECT_TRUE(catalog.problems.empty());
}

TEST(PluginCatalog, AFolderThatIsNotThereHoldsNone) {
  const TempDir folder;
  folder.write("file", "x");
  const PluginCatalog catalog = readPluginCatalog({folder / "nowhere", folder / "file"});
  EXPECT_TRUE(catalog.descriptions.empty());
  EXPECT_TRUE(catalog.problems.empty());
}

TEST(PluginCatalog, ABrokenDescriptionIsPassedOverAndNamed) {
  const TempDir folder;
  folder.write("a.json", "nonsense");
  folder.write("b.json", description("b"));
  folder.write("c.json", std::string((1 << 20) + 1, ' '));
  const PluginCatalog catalog = readPluginCatalog({folder.path()});
  EXPECT_EQ(ids(catalog), Ids{"b"});
  ASSERT_EQ(catalog.problems.size(), 2U);
  EXPECT_TRUE(catalog.problems[0].starts_with("Plug-in description " +
                                              (folder / "a.json").string() + ": It is not JSON"));
  EXPECT_EQ(catalog.problems[1], "Plug-in description " + (folder / "c.json").string() +
                                     ": It is too large for a description.");
}

TEST(PluginCatalog, TheFirstDescriptionOfAnIdCounts) {
  const TempDir folder;
  folder.write("one/a.json", description("a", "1.0"));
  folder.write("two/a.json", description("a", "9.0"));
  const PluginCatalog catalog = readPluginCatalog({folder / "one", folder / "two"});
  ASSERT_EQ(ids(catalog), Ids{"a"});
  EXPECT_EQ(catalog.descriptions[0].info.version, "1.0");
}

}  // namespace
