#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "VeskPlayerX/QueueReaderInterface.h"

namespace plugin {

class SharedQueue;

/// What the manager offers those who follow its queue. A class of its own because an operation of
/// the manager's would take a place in its own table, which is part of the interface. Once the
/// manager is shut down there are no items.
class QueueReader : public VeskPlayerX::QueueReaderInterface {
 public:
  std::vector<VeskPlayerX::QueuedVersion> getVersions() override;
  VeskPlayerX::DownloadItemInterface* getCopy(unsigned int id) override;

 protected:
  /// To be called once, before another thread knows of this object.
  void readFrom(std::weak_ptr<SharedQueue> queue) { queue_ = std::move(queue); }

 private:
  std::weak_ptr<SharedQueue> queue_;
};

}  // namespace plugin
