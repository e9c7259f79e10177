#pragma once

#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace persistence {

/// The document of a queue as the XML library's own tree and serializer write it, from a
/// second list of the attributes: the module must write the same, byte for byte.
std::string libraryDocument(const std::vector<VeskPlayerX::DownloadItemInterface*>& items);

}  // namespace persistence
