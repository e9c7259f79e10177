#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "playerx/framework/PluginExport.h"

namespace playerx {
namespace {

TEST(PluginExportTest, StoresWhatWasMade) {
  void* out = nullptr;
  KPIM::Plugin* const made = new KPIM::Plugin(nullptr);
  EXPECT_EQ(exportPlugin(&out, [made] { return made; }), KPIM::kSuccess);
  EXPECT_EQ(out, made);
  made->kpimRelease();
}

TEST(PluginExportTest, NothingThrownLeavesIt) {
  void* out = nullptr;
  const auto fails = []() -> KPIM::Plugin* { throw std::bad_alloc(); };
  EXPECT_EQ(exportPlugin(&out, fails), KPIM::kLoadFailed);
  const auto throwsANumber = []() -> KPIM::Plugin* { throw 1; };
  EXPECT_EQ(exportPlugin(&out, throwsANumber), KPIM::kLoadFailed);
  EXPECT_EQ(out, nullptr);
}

TEST(PluginExportTest, WithoutAPlaceNothingIsMade) {
  bool isMade = false;
  const auto make = [&isMade] {
    isMade = true;
    return static_cast<KPIM::Plugin*>(nullptr);
  };
  EXPECT_EQ(exportPlugin(nullptr, make), KPIM::kLoadFailed);
  EXPECT_FALSE(isMade);
}

TEST(PluginExportTest, AnInterfaceIsOfferedWhereThereIsAPlaceForIt) {
  int offered = 0;
  void* out = nullptr;
  EXPECT_EQ(offerInterface(&offered, &out), KPIM::kSuccess);
  EXPECT_EQ(out, &offered);
  EXPECT_EQ(offerInterface(&offered, nullptr), KPIM::kUnknownInterface);
}

}  // namespace
}  // namespace playerx
