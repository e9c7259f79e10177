#include "playerx/window/desktop/BusDesktop.h"

#include <QThread>

namespace playerx::window {

namespace {

/// How long the end of the program waits for a bus.
constexpr unsigned long kPatienceMs = 500;

}  // namespace

BusDesktop::BusDesktop(const BusAddresses& addresses, QObject* parent)
    : Desktop(parent), thread_(new QThread), worker_(new DesktopWorker(addresses)) {
  worker_->moveToThread(thread_);
  connect(thread_, &QThread::finished, worker_, &QObject::deleteLater);
  connect(worker_, &DesktopWorker::notificationUsed, this, &Desktop::notificationUsed);
  connect(worker_, &DesktopWorker::folderNotShown, this, &Desktop::folderNotShown);
  thread_->setObjectName(QStringLiteral("desktop"));
  thread_->start();
}

BusDesktop::~BusDesktop() {
  thread_->quit();
  // A thread that hangs in a call must not be destroyed; it ends with the process.
  if (thread_->wait(kPatienceMs)) delete thread_;
}

void BusDesktop::notify(const QString& topic, const QString& title, const QString& text) {
  QMetaObject::invokeMethod(
      worker_, [=, worker = worker_] { worker->notify(topic, title, text); }, Qt::QueuedConnection);
}

void BusDesktop::keepAwake(bool isAwake) {
  QMetaObject::invokeMethod(
      worker_, [=, worker = worker_] { worker->keepAwake(isAwake); }, Qt::QueuedConnection);
}

void BusDesktop::showProgress(double part) {
  QMetaObject::invokeMethod(
      worker_, [=, worker = worker_] { worker->showProgress(part); }, Qt::QueuedConnection);
}

void BusDesktop::showInFolder(const QString& path) {
  QMetaObject::invokeMethod(
      worker_, [=, worker = worker_] { worker->showInFolder(path); }, Qt::QueuedConnection);
}

}  // namespace playerx::window
