#pragma once

#include <string>
#include <vector>

namespace KPIM {

/// What is known of a plug-in before it is loaded: the content of its description.
struct PluginInfo {
  std::string id;                       ///< for example "com.vesk.playerX.plugin.KPXPlayerPlugin"
  std::string version;                  ///< numbers joined by ".", "1.10" is above "1.9"
  std::vector<std::string> interfaces;  ///< ids of the interfaces that it offers
};

}  // namespace KPIM
