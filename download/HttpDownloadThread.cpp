#include "download/HttpDownloadThread.h"

#include <QCoreApplication>
#include <QSettings>
#include <utility>

#include "KPX/KPXPreferences.h"
#include "download/HttpDownloadThreadImpl.h"
#include "download/MediaSize.h"

namespace {

void createSharedPreferences() {
  if (KPXPreferences::userSettings != nullptr) return;
  auto settings = std::make_unique<QSettings>(
      QSettings::UserScope, QCoreApplication::organizationName(), QStringLiteral("Settings"));
  settings->beginGroup(QCoreApplication::applicationName());
  KPXPreferences::userSettings = settings.release();
}

}  // namespace

HttpDownloadThread::HttpDownloadThread(KPIM::Context* context)
    : impl_(std::make_unique<HttpDownloadThreadImpl>(*this, context)) {
  createSharedPreferences();
}

HttpDownloadThread::~HttpDownloadThread() {
  impl_->close();  // whoever is still inside uses the pointer
  impl_.reset();
  delete std::exchange(KPXPreferences::userSettings, nullptr);
}

VeskPlayerX::DownloadItemInterface* HttpDownloadThread::getItem() { return impl_->getItem(); }

DownloadStatusEnumType HttpDownloadThread::downloadVideo(VeskPlayerX::DownloadItemInterface* item) {
  return impl_->downloadVideo(item);
}

void HttpDownloadThread::stop() { impl_->stop(); }

void HttpDownloadThread::setInterfaces(VeskPlayerX::DownloadManagerInterface* manager,
                                       VeskPlayerX::DownloadManagerViewInterface* view) {
  impl_->audience().set(manager, view);
}

void HttpDownloadThread::stopDownload(unsigned long long uid) { impl_->stopDownload(uid); }

void HttpDownloadThread::prepare() { impl_->state().prepare(); }

void HttpDownloadThread::close() { impl_->close(); }

unsigned long long HttpDownloadThread::getTotalMediaSize(const std::string& url) {
  return download::totalMediaSize(url, impl_->state().cancelToken());
}
