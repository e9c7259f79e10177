#pragma once

namespace VeskPlayerX {

/// Ids, compared exactly, under which plug-ins of the player offer their interfaces.
inline constexpr char DIN_DownloadManager[] = "com.vesk.playerX.pluginInterface.DownloadManager";
inline constexpr char DIN_Shutdown[] = "com.vesk.playerX.pluginInterface.Shutdown";
inline constexpr char DIN_Player[] = "com.vesk.playerX.pluginInterface.Player";
inline constexpr char DIN_ZPSServices[] = "com.vesk.playerX.pluginInterface.ZPSServices";

/// Id of the player's own plug-in.
inline constexpr char kPlayerPluginId[] = "com.vesk.playerX.plugin.KPXPlayerPlugin";

}  // namespace VeskPlayerX
