#include <gtest/gtest.h>

#include "playerx/app/session/HomeFolder.h"
#include "playerx/cli/Options.h"

namespace playerx {
namespace {

TEST(HomeFolderTest, TheVariableGoesBeforeTheAccount) {
  EXPECT_EQ(homeFolder("/a", "/b"), "/a");
  EXPECT_EQ(homeFolder("/", "/b"), "/");
  EXPECT_EQ(homeFolder("", "/b"), "/b");
  EXPECT_EQ(homeFolder(nullptr, "/b"), "/b");
}

TEST(HomeFolderTest, TheRootOfAllFilesIsNobodysHome) {
  EXPECT_EQ(homeFolder(nullptr, "/"), std::nullopt);
  EXPECT_EQ(homeFolder(nullptr, ""), std::nullopt);
  EXPECT_EQ(homeFolder(nullptr, nullptr), std::nullopt);
}

TEST(HomeFolderTest, WhatIsMissingIsAskedFor) {
  const std::string start =
      "There is no home folder: HOME is not set, and the account has none; name the folders with ";
  Options options;
  EXPECT_EQ(homelessness(options, nullptr), start + "--data and --media.");
  EXPECT_EQ(homelessness(options, "/share"), start + "--media.");
  options.mediaFolder = "/m";
  EXPECT_EQ(homelessness(options, ""), start + "--data.");
  options.dataFolder = "/d";
  EXPECT_EQ(homelessness(options, nullptr), "");
}

}  // namespace
}  // namespace playerx
