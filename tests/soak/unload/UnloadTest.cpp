#include <dlfcn.h>
#include <gmock/gmock.h>
#include <malloc.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include "KPIM/Plugin.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "playerx/services/OnlineServices.h"
#include "tests/soak/Count.h"
#include "tests/soak/Holdings.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/fakes/FakePlayerEnd.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace soak {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using VeskPlayerX::DownloadManagerInterface;

/// A host that loads the module, lets it work, and gives it up in the midst of it, with a media
/// server and online services that fall silent.
class Unload : public ManagerFixture {
 protected:
  Unload() {
    silent_.always(support::Script().readRequest().stall());
    silentServices_.onRequest(
        [this](const std::string& request) { return answerOfServices(request); });
    context_.offer<playerx::PlayerEnd>(playerx::kPlayerEndId, &end_);
    library_.whileStarting([this](unsigned long long uid) { library_.progress(uid, 7); });
  }

  support::Script answerOfServices(const std::string& request) {
    const bool isReady = isReady_ && request.starts_with("GET /ready");
    return isReady ? support::Script::answer(support::okResponse(R"({"ready":true})"))
                   : support::Script().stall();
  }

  void cycle() {
    log_.clear();
    isReady_ = random_() % 2 == 0;
    end_.underWay = false;
    auto* const client = new playerx::OnlineServices(
        &context_, playerx::JsonClient(silentServices_.url("", "127.0.0.1"), {}));
    context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, client);
    given("A1 B4 C1 D6", [this](Item& item) {
      item.setEncrypted(random_() % 2 == 0);
      if (!item.getEncrypted()) item.setUrl(silentUrl());
    });
    void* const module = ::dlopen(VESK_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << ::dlerror();
    auto* const getPlugin =
        reinterpret_cast<KPIM::GetPluginFunction*>(::dlsym(module, "getPlugin"));
    void* out = nullptr;
    ASSERT_EQ(getPlugin(&context_, &out), 0);
    auto* const plugin = static_cast<KPIM::Plugin*>(out);
    work(*face<DownloadManagerInterface>(plugin, VeskPlayerX::DIN_DownloadManager));
    end(plugin);
    EXPECT_EQ(::dlclose(module), 0);
    EXPECT_EQ(client->kpimRelease(), 0);
  }

  template <class I>
  I* face(KPIM::Plugin* plugin, const char* id) {
    void* out = nullptr;
    EXPECT_EQ(plugin->kpimGetInterface(id, &out), 0);
    return static_cast<I*>(out);
  }

  void work(DownloadManagerInterface& queue) {
    queue.setViewInterface(&view_);
    queue.add(silentUrl(), L"Film", L"");
    if (random_() % 2 == 0) queue.retry(queue.get(silentUrl())->getId());
    if (random_() % 4 == 0) queue.pause();
    std::this_thread::sleep_for(milliseconds(random_() % 20));
  }

  std::wstring silentUrl() const {
    return kvpm::StringTools::stringToWString(silent_.url("/film.avi", "127.0.0.1"));
  }

  void end(KPIM::Plugin* plugin) {
    const auto start = steady_clock::now();
    end_.underWay = true;
    face<VeskPlayerX::ShutdownInterface>(plugin, VeskPlayerX::DIN_Shutdown)->Shutdown();
    const auto took = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    longest_ = std::max(longest_, took);
    EXPECT_EQ(plugin->kpimRelease(), 0);
    EXPECT_FALSE(library_.hasCallback());
  }

  support::ScriptedServer silent_;
  support::ScriptedServer silentServices_;
  support::FakePlayerEnd end_;
  std::atomic<bool> isReady_{false};
  milliseconds longest_{0};
  std::mt19937 random_{std::random_device{}()};
};

TEST_F(Unload, InTheMidstOfWorkLeavesNothingBehind) {
  constexpr int kWarmUp = 30;
  constexpr int kLargeBlock = 128 << 10;
  // Given back when it is freed, as at the start of a process: the allocator would get used to
  // large blocks, and keep one.
  ::mallopt(M_MMAP_THRESHOLD, kLargeBlock);
  for (int i = 0; i < kWarmUp; ++i) cycle();
  // What is free is kept in as many heaps as threads have allocated at the same time, which is up
  // to the machine.
  ::malloc_trim(0);
  const Holdings before = holdingsOf();
  for (int i = 0; i < countOr(60) && !HasFailure(); ++i) cycle();
  ::malloc_trim(0);
  const Holdings after = expectFlat(before);
  EXPECT_LT(longest_, milliseconds(500));
  std::cout << before.kilobytes << " KB became " << after.kilobytes << "; longest shutdown "
            << longest_.count() << " ms" << std::endl;
}

}  // namespace
}  // namespace soak
