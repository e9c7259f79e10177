// Changes a queue of about 100 items, one random operation after the other. Prints the state of the
// queue at the start, and after each operation once it has returned; behind a "~", that at each
// notice of the view on the way, each of which comes after a save.
//
// QueueHost FOLDER SEED OPERATIONS

#include <QString>
#include <iostream>
#include <memory>
#include <random>
#include <string>

#include "playerx/platform/ThreadGate.h"
#include "playerx/settings/Folders.h"
#include "plugin/DownloadManager.h"
#include "tests/soak/kill/QueueState.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeView.h"

namespace {

class QueueHost {
 public:
  explicit QueueHost(unsigned int seed) : random_(seed), manager_(new DownloadManager(&context_)) {
    manager_->setViewInterface(&view_);
    view_.onEvent([this](const std::string&) { std::cout << '~' << state() << '\n'; });
  }

  ~QueueHost() {
    manager_->Shutdown();
    manager_->kpimRelease();
  }

  QueueHost(const QueueHost&) = delete;
  QueueHost& operator=(const QueueHost&) = delete;

  void printState() { std::cout << state() << std::endl; }

  void change() {
    const unsigned int count = manager_->getNumberOfVideosInQueue();
    if (count < 80) return add();
    if (count > 120) return void(manager_->remove(anyId()));
    act();
    log_.clear();
  }

 private:
  std::string state() {
    auto* const copy = manager_->getCopyofQueue();
    std::string text = soak::stateOf(*copy);
    manager_->deleteCopyOfQueue(copy);
    return text;
  }

  unsigned int pick(unsigned int below) {
    return std::uniform_int_distribution<unsigned int>(0, below - 1)(random_);
  }

  unsigned int anyId() { return manager_->at(pick(manager_->getNumberOfVideosInQueue()))->getId(); }

  void add() {
    const std::wstring number = std::to_wstring(pick(1'000'000));
    manager_->add(L"http://films.example/" + number + L".avi", L"Film " + number, L"Films");
  }

  void act() {
    switch (pick(10)) {
      case 0:
      case 1:
        return add();
      case 2:
        return void(manager_->remove(anyId()));
      case 3:
        return void(manager_->moveUp(anyId()));
      case 4:
        return void(manager_->moveDown(anyId()));
      case 5:
        return manager_->moveToTop(anyId());
      case 6:
        return manager_->moveToBottom(anyId());
      case 7:
        return void(manager_->updatePath(anyId(), L"/films/" + std::wstring(pick(300), L'x')));
      case 8:
        return void(manager_->updateSize(anyId(), pick(1'000'000'000)));
      default:
        return void(manager_->updateStatus(anyId(), DownloadStatusFailed));
    }
  }

  std::mt19937 random_;
  support::EventLog log_;
  support::FakeView view_{log_};
  support::FakeContext context_;
  DownloadManager* const manager_;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  playerx::setApplicationDataPath(QString::fromLocal8Bit(arguments[1]));
  // Only the operations change the queue.
  playerx::ThreadGate::close();
  QueueHost host(static_cast<unsigned int>(std::stoul(arguments[2])));
  host.printState();
  for (unsigned long left = std::stoul(arguments[3]); left > 0; --left) {
    host.change();
    host.printState();
  }
  return 0;
}
