#include "download/HttpDownloadThread.h"

#include <utility>

#include "download/HttpDownloadThreadImpl.h"
#include "download/MediaSize.h"

HttpDownloadThread::HttpDownloadThread(KPIM::Context* context)
    : impl_(std::make_unique<HttpDownloadThreadImpl>(context)) {}

HttpDownloadThread::~HttpDownloadThread() {
  impl_->close();  // other threads use the pointer until this returns
}

VeskPlayerX::DownloadItemInterface* HttpDownloadThread::getItem() { return impl_->getItem(); }

DownloadStatusEnumType HttpDownloadThread::downloadVideo(VeskPlayerX::DownloadItemInterface* item) {
  return impl_->downloadVideo(item);
}

void HttpDownloadThread::stop() { impl_->stop(); }

void HttpDownloadThread::setInterfaces(VeskPlayerX::DownloadManagerInterface* manager,
                                       VeskPlayerX::DownloadManagerViewInterface* view) {
  impl_->host().setInterfaces(manager, view);
}

void HttpDownloadThread::stopDownload(unsigned long long uid) { impl_->stopDownload(uid); }

void HttpDownloadThread::setPlayback(std::function<bool(unsigned int id)> playback) {
  impl_->setPlayback(std::move(playback));
}

void HttpDownloadThread::prepare() { impl_->state().prepare(); }

void HttpDownloadThread::close() { impl_->close(); }

unsigned long long HttpDownloadThread::getTotalMediaSize(const std::string& url) {
  return download::totalMediaSize(url, impl_->state().cancelToken());
}
