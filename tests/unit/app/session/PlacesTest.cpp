#include <gtest/gtest.h>

#include "playerx/app/session/Places.h"
#include "tests/support/TempDir.h"

namespace playerx::session {
namespace {

TEST(PlacesTest, TheVariableGoesBeforeTheAccount) {
  EXPECT_EQ(homeFolder("/a", "/b"), "/a");
  EXPECT_EQ(homeFolder("/", "/b"), "/");
  EXPECT_EQ(homeFolder("", "/b"), "/b");
  EXPECT_EQ(homeFolder(nullptr, "/b"), "/b");
}

TEST(PlacesTest, TheRootOfAllFilesIsNobodysHome) {
  EXPECT_EQ(homeFolder(nullptr, "/"), std::nullopt);
  EXPECT_EQ(homeFolder(nullptr, ""), std::nullopt);
  EXPECT_EQ(homeFolder(nullptr, nullptr), std::nullopt);
}

TEST(PlacesTest, AFolderThatIsNotNamedInUtf8IsRefused) {
  SessionOptions options;
  options.dataFolder = "/tmp/\xE9t\xE9";
  EXPECT_EQ(folderProblem(options),
            "--data cannot be /tmp/\xE9t\xE9: the name is not text in UTF-8.");
  options.dataFolder = "/tmp/\xC3\xA9t\xC3\xA9";
  EXPECT_EQ(folderProblem(options), "");
  options.mediaFolder = "\xFF";
  EXPECT_EQ(folderProblem(options), "--media cannot be \xFF: the name is not text in UTF-8.");
}

TEST(PlacesTest, ADataFolderBehindALinkThatLeadsNowhereIsRefused) {
  const support::TempDir folder;
  const std::string link = folder / "link";
  std::filesystem::create_symlink("nowhere", link);
  SessionOptions options;
  for (const std::string& data : {link, link + "/below"}) {
    options.dataFolder = data;
    EXPECT_EQ(folderProblem(options),
              "--data cannot be " + data + ": " + link + " is a link that leads nowhere.");
  }
  std::filesystem::create_directory(folder / "nowhere");
  for (const std::string& data : {link, link + "/below"}) {
    options.dataFolder = data;
    EXPECT_EQ(folderProblem(options), "") << "a link to a folder";
  }
}

TEST(PlacesTest, WhatIsMissingIsAskedFor) {
  const std::string start =
      "There is no home folder: HOME is not set, and the account has none; name the folders with ";
  SessionOptions options;
  EXPECT_EQ(missingHomeProblem(options, nullptr), start + "--data and --media.");
  EXPECT_EQ(missingHomeProblem(options, "/share"), start + "--media.");
  options.mediaFolder = "/m";
  EXPECT_EQ(missingHomeProblem(options, ""), start + "--data.");
  options.dataFolder = "/d";
  EXPECT_EQ(missingHomeProblem(options, nullptr), "");
}

}  // namespace
}  // namespace playerx::session
