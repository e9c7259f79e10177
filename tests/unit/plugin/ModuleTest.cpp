#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "KPIM/Plugin.h"
#include "KPX/KPXPreferences.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "plugin/DownloadManager.h"
#include "tests/support/VtableSlots.h"
#include "tests/unit/plugin/ManagerFixture.h"
#include "tests/unit/plugin/QueueText.h"

namespace {

using support::slotOf;

// The object's own table: a host that was compiled elsewhere calls by place.
TEST(PrimaryTable, BeginsWithThePluginsOperations) {
  EXPECT_EQ(slotOf(&DownloadManager::kpimRetain), 2);
  EXPECT_EQ(slotOf(&DownloadManager::kpimRelease), 3);
  EXPECT_EQ(slotOf(&DownloadManager::kpimHoldCount), 4);
  EXPECT_EQ(slotOf(&DownloadManager::kpimGetPluginInfo), 5);
  EXPECT_EQ(slotOf(&DownloadManager::kpimGetPluginContext), 6);
  EXPECT_EQ(slotOf(&DownloadManager::kpimGetInterface), 7);
}

TEST(PrimaryTable, GoesOnWithTheViewTheShutdownAndTheQueuesOperations) {
  using Item = VeskPlayerX::DownloadItemInterface;
  EXPECT_EQ(slotOf(&DownloadManager::setViewInterface), 8);
  EXPECT_EQ(slotOf(&DownloadManager::Shutdown), 9);
  EXPECT_EQ(slotOf(&DownloadManager::getCopyofQueue), 10);
  EXPECT_EQ(slotOf(&DownloadManager::deleteCopyOfQueue), 11);
  EXPECT_EQ(slotOf(&DownloadManager::getNumberOfVideosInQueue), 12);
  EXPECT_EQ(slotOf(&DownloadManager::zpsFileOpenedForPlayback), 13);
  EXPECT_EQ(slotOf(&DownloadManager::add), 14);
  EXPECT_EQ(slotOf(&DownloadManager::addTicket), 15);
  EXPECT_EQ(slotOf(&DownloadManager::updateStatus), 16);
  EXPECT_EQ(slotOf(&DownloadManager::updatePath), 17);
  EXPECT_EQ(slotOf(&DownloadManager::updateSize), 18);
  EXPECT_EQ(slotOf(&DownloadManager::updateDownloadProgress), 19);
  EXPECT_EQ(slotOf(&DownloadManager::updateSlotAssignment), 20);
  EXPECT_EQ(slotOf(&DownloadManager::setTicketAlreadyTorn), 21);
  EXPECT_EQ(slotOf(&DownloadManager::setDownloadUrl), 22);
  EXPECT_EQ(slotOf(&DownloadManager::setDownloadInfo), 23);
  EXPECT_EQ(slotOf(&DownloadManager::setPlayable), 24);
  EXPECT_EQ(slotOf(&DownloadManager::setTicketId), 25);
  EXPECT_EQ(slotOf(&DownloadManager::isPaused), 26);
  EXPECT_EQ(slotOf(&DownloadManager::pause), 27);
  EXPECT_EQ(slotOf(&DownloadManager::resume), 28);
  EXPECT_EQ(slotOf(&DownloadManager::cancel), 29);
  EXPECT_EQ(slotOf(&DownloadManager::clearCompletedDownloads), 30);
  EXPECT_EQ(slotOf(&DownloadManager::remove), 31);
  EXPECT_EQ(slotOf(&DownloadManager::retry), 32);
  EXPECT_EQ(slotOf(&DownloadManager::play), 33);
  EXPECT_EQ(slotOf(&DownloadManager::moveUp), 34);
  EXPECT_EQ(slotOf(&DownloadManager::moveDown), 35);
  EXPECT_EQ(slotOf(&DownloadManager::moveToTop), 36);
  EXPECT_EQ(slotOf(&DownloadManager::moveToBottom), 37);
  EXPECT_EQ(slotOf(&DownloadManager::resumeDownloadingFile), 38);
  EXPECT_EQ(slotOf(&DownloadManager::resumePlaybackForUrl), 39);
  using GetById = Item* (DownloadManager::*)(unsigned int);
  using GetByUrl = Item* (DownloadManager::*)(const std::wstring&);
  EXPECT_EQ(slotOf(static_cast<GetById>(&DownloadManager::get)), 40);
  EXPECT_EQ(slotOf(static_cast<GetByUrl>(&DownloadManager::get)), 41);
}

TEST(PrimaryTable, HoldsNoOtherOperation) {
  EXPECT_EQ(slotOf(&DownloadManager::at), -1);
  EXPECT_EQ(slotOf(&DownloadManager::getByTicket), -1);
  EXPECT_EQ(slotOf(&DownloadManager::getByPath), -1);
  struct Extended : DownloadManager {
    using DownloadManager::DownloadManager;
    virtual void behindTheLast() {}
  };
  EXPECT_EQ(slotOf(&Extended::behindTheLast), 42);
}

TEST(PrimaryTable, BelongsToThePluginWhichComesFirst) {
  alignas(DownloadManager) std::byte place[sizeof(DownloadManager)];
  auto* const manager = reinterpret_cast<DownloadManager*>(place);
  const auto offset = [manager](auto* base) {
    return reinterpret_cast<std::byte*>(base) - reinterpret_cast<std::byte*>(manager);
  };
  const auto plugin = offset(static_cast<KPIM::Plugin*>(manager));
  const auto queue = offset(static_cast<VeskPlayerX::DownloadManagerInterface*>(manager));
  const auto shutdown = offset(static_cast<VeskPlayerX::ShutdownInterface*>(manager));
  EXPECT_EQ(plugin, 0);
  EXPECT_LT(plugin, queue);
  EXPECT_LT(queue, shutdown);
}

/// Names of the dynamic symbols that the library at `path` defines.
std::vector<std::string> exportedSymbols(const std::string& path) {
  std::vector<char> bytes(std::filesystem::file_size(path));
  std::ifstream(path, std::ios::binary).read(bytes.data(), std::ssize(bytes));
  const auto at = [&bytes](std::size_t offset) { return bytes.data() + offset; };
  const auto* const header = reinterpret_cast<const ElfW(Ehdr)*>(at(0));
  const auto* const sections = reinterpret_cast<const ElfW(Shdr)*>(at(header->e_shoff));
  std::vector<std::string> names;
  for (std::size_t i = 0; i < header->e_shnum; ++i) {
    if (sections[i].sh_type != SHT_DYNSYM) continue;
    const char* const texts = at(sections[sections[i].sh_link].sh_offset);
    const auto* symbol = reinterpret_cast<const ElfW(Sym)*>(at(sections[i].sh_offset));
    const auto* const end = symbol + sections[i].sh_size / sizeof(*symbol);
    for (; symbol != end; ++symbol) {
      if (symbol->st_shndx != SHN_UNDEF) names.emplace_back(texts + symbol->st_name);
    }
  }
  return names;
}

TEST(Module, ExportsTheCreationFunctionAndNothingElse) {
  EXPECT_EQ(exportedSymbols(VESK_MODULE), std::vector<std::string>{"getPlugin"});
}

TEST(Module, IsDescribedBesideItself) {
  std::ifstream in(VESK_MODULE_DESCRIPTION);
  const auto description = nlohmann::json::parse(in);
  EXPECT_EQ(description["id"], "com.vesk.playerX.plugin.DownloadManager");
  EXPECT_EQ(description["version"], VESK_VERSION);
  EXPECT_EQ(description["interfaces"], (std::vector<std::string>{VeskPlayerX::DIN_DownloadManager,
                                                                 VeskPlayerX::DIN_Shutdown}));
  EXPECT_EQ(description["library"], "libdownloadmanager.so");
}

/// The module as a host loads it.
class LoadedModuleTest : public ManagerFixture {
 protected:
  void SetUp() override {
    library = dlopen(VESK_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    getPlugin = reinterpret_cast<KPIM::GetPluginFunction*>(dlsym(library, "getPlugin"));
    ASSERT_NE(getPlugin, nullptr);
  }
  void TearDown() override { dlclose(library); }

  template <class I>
  I* face(KPIM::Plugin* plugin, const char* id) {
    void* out = nullptr;
    EXPECT_EQ(plugin->kpimGetInterface(id, &out), 0);
    return static_cast<I*>(out);
  }

  void* library = nullptr;
  KPIM::GetPluginFunction* getPlugin = nullptr;
};

TEST_F(LoadedModuleTest, MakesAPluginThatDownloadsAndShutsDown) {
  given("A1");
  void* out = nullptr;
  ASSERT_EQ(getPlugin(&context_, &out), 0);
  auto* const plugin = static_cast<KPIM::Plugin*>(out);
  auto* const queue =
      face<VeskPlayerX::DownloadManagerInterface>(plugin, VeskPlayerX::DIN_DownloadManager);
  queue->setViewInterface(&view_);
  EXPECT_EQ(queue->getNumberOfVideosInQueue(), 1U);
  library_.complete(transferOf("A"));
  EXPECT_TRUE(support::waitFor([&] {
    auto* const copy = queue->getCopyofQueue();
    const bool complete = copy->front()->getStatus() == DownloadStatusCompleted;
    queue->deleteCopyOfQueue(copy);
    return complete;
  }));
  face<VeskPlayerX::ShutdownInterface>(plugin, VeskPlayerX::DIN_Shutdown)->Shutdown();
  EXPECT_EQ(plugin->kpimRelease(), 0);
}

TEST_F(LoadedModuleTest, WithoutAContextEveryFilmFails) {
  given("A1 B1", [](Item& item) { item.setEncrypted(item.getTitle() == L"A"); });
  void* out = nullptr;
  ASSERT_EQ(getPlugin(nullptr, &out), 0);
  auto* const plugin = static_cast<KPIM::Plugin*>(out);
  auto* const queue =
      face<VeskPlayerX::DownloadManagerInterface>(plugin, VeskPlayerX::DIN_DownloadManager);
  EXPECT_TRUE(support::waitFor([&] {
    auto* const copy = queue->getCopyofQueue();
    const std::string text = queue_text::textOf(*copy);
    queue->deleteCopyOfQueue(copy);
    return text == "A6 B6";
  }));
  EXPECT_TRUE(queue->addTicket(L"/c.tix", false).empty());
  EXPECT_FALSE(queue->resumePlaybackForUrl(kvpm::StringTools::stringToWString(kFilm)));
  face<VeskPlayerX::ShutdownInterface>(plugin, VeskPlayerX::DIN_Shutdown)->Shutdown();
  EXPECT_EQ(plugin->kpimRelease(), 0);
}

TEST_F(LoadedModuleTest, StaysMappedWhenTheHostUnloadsIt) {
  dlclose(library);
  library = dlopen(VESK_MODULE, RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(dlsym(library, "getPlugin"), reinterpret_cast<void*>(getPlugin));
}

TEST_F(LoadedModuleTest, ShuttingDownMayReleaseTheLastReference) {
  given("A1");
  void* out = nullptr;
  ASSERT_EQ(getPlugin(&context_, &out), 0);
  auto* const plugin = static_cast<KPIM::Plugin*>(out);
  auto* const shutdown = face<VeskPlayerX::ShutdownInterface>(plugin, VeskPlayerX::DIN_Shutdown);
  transferOf("A");
  ASSERT_EQ(plugin->kpimRelease(), 1);
  shutdown->Shutdown();
  EXPECT_FALSE(library_.hasCallback());
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

TEST_F(LoadedModuleTest, TheContextIsNotLookedAt) {
  void* out = nullptr;
  ASSERT_EQ(getPlugin(nullptr, &out), 0);
  auto* const plugin = static_cast<KPIM::Plugin*>(out);
  EXPECT_EQ(plugin->kpimGetPluginContext(), nullptr);
  face<VeskPlayerX::ShutdownInterface>(plugin, VeskPlayerX::DIN_Shutdown)->Shutdown();
  EXPECT_EQ(plugin->kpimRelease(), 0);
}

}  // namespace
