#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInterface.h"
#include "KPIM/Result.h"
#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/File.h"

namespace {

TEST(Constants, InterfaceIds) {
  EXPECT_STREQ(VeskPlayerX::DIN_DownloadManager,
               "com.vesk.playerX.pluginInterface.DownloadManager");
  EXPECT_STREQ(VeskPlayerX::DIN_Shutdown, "com.vesk.playerX.pluginInterface.Shutdown");
  EXPECT_STREQ(VeskPlayerX::DIN_Player, "com.vesk.playerX.pluginInterface.Player");
  EXPECT_STREQ(VeskPlayerX::DIN_ZPSServices, "com.vesk.playerX.pluginInterface.ZPSServices");
  EXPECT_STREQ(VeskPlayerX::kPlayerPluginId, "com.vesk.playerX.plugin.KPXPlayerPlugin");
  EXPECT_STREQ(KPB::DIN_Download, "com.vesk.playback.interface.Download");
  EXPECT_STREQ(KPB::DIN_DownloadCallback, "com.vesk.playback.interface.DownloadCallback");
}

TEST(Constants, Results) {
  EXPECT_EQ(KPIM::kSuccess, 0);
  EXPECT_EQ(KPIM::kUnknownInterface, 3);
  static_assert(std::is_same_v<KPIM::VESK_RESULT, std::int32_t>);
}

TEST(Constants, OpenModes) {
  EXPECT_EQ(kvpm::FileOpenRead, 0);
  EXPECT_EQ(kvpm::FileOpenWrite, 1);
}

TEST(Constants, Widths) {
  static_assert(sizeof(wchar_t) == 4);
  static_assert(std::is_same_v<std::underlying_type_t<DownloadStatusEnumType>, std::int32_t>);
  static_assert(
      std::is_same_v<decltype(std::declval<VeskPlayerX::DownloadItemInterface>().getTicketId()),
                     long>);
}

}  // namespace
