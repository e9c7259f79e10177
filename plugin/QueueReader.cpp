#include "plugin/QueueReader.h"

#include "plugin/SharedQueue.h"

namespace plugin {

std::vector<VeskPlayerX::QueuedVersion> QueueReader::getVersions() {
  const auto queue = queue_.lock();
  return queue ? queue->versions() : std::vector<VeskPlayerX::QueuedVersion>();
}

VeskPlayerX::DownloadItemInterface* QueueReader::getCopy(unsigned int id) {
  const auto queue = queue_.lock();
  return queue ? queue->copyOf(id) : nullptr;
}

}  // namespace plugin
