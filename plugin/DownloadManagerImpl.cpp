#include "plugin/DownloadManagerImpl.h"

#include "KPX/OSUtilities.h"
#include "kvpm/TimeTools.h"
#include "plugin/QueueFiles.h"

namespace {

/// How often the end of the scheduler thread is looked for. Its last event comes before its end, so
/// nothing announces the end itself.
constexpr std::uint32_t kStopPollMilliseconds = 1;

}  // namespace

DownloadManager::DownloadManagerImpl::DownloadManagerImpl(DownloadManager* owner,
                                                          KPIM::Context* context)
    : owner_(owner),
      context_(context),
      services_(context),
      confirmations_([this](long ticketId, std::uint64_t bytes) { tellServices(ticketId, bytes); },
                     events_),
      worker_(context),
      thread_(this) {}

DownloadManager::DownloadManagerImpl::~DownloadManagerImpl() { stopDownloadManagerThread(); }

void DownloadManager::DownloadManagerImpl::open() {
  worker_.setPlayback([this](unsigned int id) { return playRunning(id); });
  worker_.setInterfaces(owner_, nullptr);
  const plugin::QueueFiles files(VeskPlayerX::OSUtilities::getApplicationDataPath().toStdWString());
  {
    const kvpm::CritLock lock(queueLock_);
    queue_.assign(files.readQueue());
  }
  queueFile_ = files.current();
  updateListChanged();
  startDownloadManagerThread();
}

void DownloadManager::DownloadManagerImpl::close() {
  closing_ = true;
  events_.raise();
  view_.attach(nullptr);
  worker_.setInterfaces(owner_, nullptr);
  pauseByHost();
  stopDownloadManagerThread();
  worker_.close();
  confirmations_.finish();
}

void DownloadManager::DownloadManagerImpl::setViewInterface(View* view) {
  view_.attach(view);
  worker_.setInterfaces(owner_, view);
}

void DownloadManager::DownloadManagerImpl::startDownloadManagerThread() {
  if (!closing_ && !thread_.isRunning()) thread_.start();
}

void DownloadManager::DownloadManagerImpl::stopDownloadManagerThread() {
  if (!thread_.isRunning()) return;
  thread_.stop();
  events_.raise();
  while (thread_.isRunning()) kvpm::TimeTools::sleep(kStopPollMilliseconds);
}
