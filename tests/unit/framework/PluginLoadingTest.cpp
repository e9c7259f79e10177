#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "playerx/framework/PluginContext.h"
#include "tests/support/TempDir.h"
#include "tests/unit/framework/RecordingPlugin.h"

// Real libraries, loaded by the system's loader.

namespace {

namespace fs = std::filesystem;
using framework_test::find;
using framework_test::Held;
using playerx::PluginContext;
using support::TempDir;

const fs::path kLibraries = TEST_PLUGINS;

void describe(const TempDir& folder, const std::string& name, const fs::path& library,
              const std::string& version = "1.0") {
  folder.write(name + ".json", R"({"id": ")" + name + R"(", "version": ")" + version +
                                   R"(", "interfaces": ["sample"], "library": ")" +
                                   library.string() + R"("})");
}

bool isInMemory(const fs::path& library) {
  void* handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) ::dlclose(handle);
  return handle != nullptr;
}

TEST(PluginLoading, FollowsADescription) {
  const TempDir folder;
  describe(folder, "sample", kLibraries / "sample.so");
  PluginContext context({folder.path()});
  EXPECT_FALSE(isInMemory(kLibraries / "sample.so"));
  const auto found = find(context, "sample");
  ASSERT_EQ(found.result, 0);
  EXPECT_TRUE(isInMemory(kLibraries / "sample.so"));
  EXPECT_EQ(found.plugin->kpimGetPluginInfo()->id, "sample");
  void* face = nullptr;
  EXPECT_EQ(found.plugin->kpimGetInterface("sample", &face), 0);
  EXPECT_EQ(face, found.plugin.get());
}

TEST(PluginLoading, LooksBesideTheDescription) {
  const TempDir folder;
  fs::copy_file(kLibraries / "sample.so", folder / "mine.so");
  describe(folder, "sample", "mine.so");
  PluginContext context({folder.path()});
  EXPECT_EQ(find(context, "sample").result, 0);
  EXPECT_TRUE(isInMemory(folder / "mine.so"));
}

TEST(PluginLoading, OffersNoSymbolsToOthers) {
  const TempDir folder;
  describe(folder, "sample", kLibraries / "sample.so");
  PluginContext context({folder.path()});
  const Held held = find(context, "sample").plugin;
  EXPECT_EQ(::dlsym(RTLD_DEFAULT, "getPlugin"), nullptr);
}

TEST(PluginLoading, TheLibraryGoesWithItsPlugin) {
  const TempDir folder;
  describe(folder, "sample", kLibraries / "sample.so");
  PluginContext context({folder.path()});
  EXPECT_EQ(find(context, "sample").result, 0);
  EXPECT_TRUE(isInMemory(kLibraries / "sample.so"));
  context.shutdown();
  EXPECT_FALSE(isInMemory(kLibraries / "sample.so"));
}

TEST(PluginLoading, TheLibraryStaysWhileItsPluginIsHeld) {
  const TempDir folder;
  fs::copy_file(kLibraries / "sample.so", folder / "held.so");
  describe(folder, "sample", "held.so");
  PluginContext context({folder.path()});
  Held held = find(context, "sample").plugin;
  context.shutdown();
  EXPECT_TRUE(isInMemory(folder / "held.so"));
  EXPECT_EQ(held->kpimHoldCount(), 1);
}

TEST(PluginLoading, WhatCannotBeLoadedIsPassedOverAndNamed) {
  const TempDir folder;
  folder.write("text.so", "this is no library");
  folder.write("broken.json", "{");
  describe(folder, "missing", "missing.so", "6");
  describe(folder, "text", "text.so", "5");
  describe(folder, "entryless", kLibraries / "entryless.so", "4");
  describe(folder, "throwing", kLibraries / "throwing.so", "3");
  describe(folder, "refusing", kLibraries / "refusing.so", "2");
  describe(folder, "sample", kLibraries / "sample.so", "1");
  PluginContext context({folder.path()});
  const Held held = find(context, "sample").plugin;
  ASSERT_NE(held, nullptr);
  EXPECT_EQ(held->kpimGetPluginInfo()->id, "sample");
  const std::vector<std::string> problems = context.problems();
  ASSERT_EQ(problems.size(), 6U);
  EXPECT_TRUE(problems[0].starts_with("Plug-in description "));
  EXPECT_TRUE(problems[1].starts_with("Plug-in missing: It cannot be loaded: "));
  EXPECT_TRUE(problems[2].starts_with("Plug-in text: It cannot be loaded: "));
  EXPECT_TRUE(problems[3].starts_with("Plug-in entryless: It cannot be loaded: "));
  EXPECT_EQ(problems[4], "Plug-in throwing: Its getPlugin failed: no film today.");
  EXPECT_EQ(problems[5], "Plug-in refusing: Its getPlugin made no plug-in (result 2).");
  EXPECT_FALSE(isInMemory(kLibraries / "entryless.so"));
}

TEST(PluginLoading, AnswersTwoWhenNoLibraryCanBeLoaded) {
  const TempDir folder;
  describe(folder, "missing", "missing.so");
  PluginContext context({folder.path()});
  EXPECT_EQ(find(context, "sample").result, 2);
}

}  // namespace
