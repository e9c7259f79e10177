#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "KPB/DownloadInterface.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "plugin/StatusGroups.h"
#include "tests/soak/Count.h"
#include "tests/soak/threads/HostileLibrary.h"
#include "tests/soak/threads/Watchdog.h"
#include "tests/unit/plugin/ManagerFixture.h"
#include "tests/unit/plugin/QueueText.h"

namespace soak {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

/// Services for which every ticket is protected, and holds one film that is named as its file is.
class TicketServices : public support::FakeServices {
 public:
  using FakeServices::FakeServices;

  std::vector<VeskDrmTicketData*> readTicket(const std::wstring& path) override {
    const std::lock_guard lock(mutex_);
    VeskDrmTicketData& record = records_.emplace_back();
    record.title = path.substr(path.rfind(L'/') + 1);
    record.ticket = "ticket of " + support::narrow(record.title);
    record.contentEncryptionUsageId = static_cast<std::int32_t>(records_.size());
    record.version = "2.0";
    return {&record};
  }

 private:
  std::mutex mutex_;
  std::deque<VeskDrmTicketData> records_;  // a deque: what is handed out stays where it is
};

/// One of the threads, with the films that it has added and may remove.
class Caller {
 public:
  Caller(DownloadManager& manager, std::string name, unsigned int seed)
      : manager_(manager), name_(std::move(name)), random_(seed) {}

  const std::set<std::string>& titles() const { return titles_; }

  void act() {
    const unsigned int id = anyId();
    switch (pick(19)) {
      case 0:
      case 1:
        return add();
      case 2:
        return remove();
      case 3:
        return manager_.pause();
      case 4:
        return manager_.resume();
      case 5:
        return manager_.cancel();
      case 6:
        return manager_.retry(id);
      case 7:
        return void(manager_.moveUp(id));
      case 8:
        return void(manager_.moveDown(id));
      case 9:
        return manager_.moveToTop(id);
      case 10:
        return manager_.moveToBottom(id);
      case 11:
        return void(manager_.updateStatus(id, static_cast<DownloadStatusEnumType>(pick(8))));
      case 12:
        return void(manager_.updateDownloadProgress(id, static_cast<int>(pick(101))));
      case 13:
        return void(manager_.updateSize(id, pick(1'000)) && manager_.setPlayable(id, true));
      case 14:
        return void(manager_.updatePath(id, L"/films/" + std::to_wstring(pick(9)) + L".vesk"));
      case 15:
        return void(manager_.setDownloadInfo(id, {}) && manager_.setTicketId(id, 7));
      case 16:
        return void(manager_.setDownloadUrl(id, L"http://films.example/other.vesk"));
      case 17:
        return manager_.resumeDownloadingFile(L"/films/1.vesk");
      default:
        return void(manager_.updateSlotAssignment(id, 1) && manager_.setTicketAlreadyTorn(id));
    }
  }

  unsigned int pick(unsigned int below) {
    return std::uniform_int_distribution<unsigned int>(0, below - 1)(random_);
  }

 private:
  /// An id that is queued, or was, or never will be.
  unsigned int anyId() {
    auto* const copy = manager_.getCopyofQueue();
    const std::size_t place = pick(static_cast<unsigned int>(copy->size()) + 1);
    const unsigned int id = place < copy->size() ? (*copy)[place]->getId() : 0;
    manager_.deleteCopyOfQueue(copy);
    return id;
  }

  void add() {
    const std::string title = name_ + std::to_string(++added_);
    manager_.addTicket(kvpm::StringTools::stringToWString("/tickets/" + title), false);
    titles_.insert(title);
  }

  void remove() {
    if (titles_.empty()) return;
    auto* const copy = manager_.getCopyofQueue();
    for (const auto* const item : *copy) {
      if (queue_text::titleOf(*item) != *titles_.begin()) continue;
      EXPECT_TRUE(manager_.remove(item->getId())) << *titles_.begin();
    }
    manager_.deleteCopyOfQueue(copy);
    titles_.erase(titles_.begin());
  }

  DownloadManager& manager_;
  const std::string name_;
  std::mt19937 random_;
  int added_ = 0;
  std::set<std::string> titles_;
};

class Threads : public ManagerFixture {
 protected:
  Threads() {
    context_.offer<KPB::DownloadInterface>(KPB::DIN_Download, &hostile_);
    context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &tickets_);
    VeskDrmDownloadAuthorization answer;
    answer.success = true;
    answer.url = kFilm;
    answer.totalSize = 1'000;
    tickets_.setAnswers({answer});
    start();
  }

  ~Threads() override {
    shutDown();
    EXPECT_TRUE(hostile_.waitUntilIdle());
  }

  /// Lets all threads act for a while.
  void actAtOnce(unsigned int seed, seconds time) {
    for (unsigned int place = 0; place < Watchdog::kPlaces; ++place) {
      const std::string name(1, static_cast<char>('A' + place));
      callers_.emplace_back(manager(), name, seed * Watchdog::kPlaces + place);
    }
    std::vector<std::thread> threads;
    for (std::size_t place = 0; place < Watchdog::kPlaces; ++place) {
      threads.emplace_back([this, place, end = steady_clock::now() + time] {
        while (steady_clock::now() < end) act(place);
        ++ended_;
      });
    }
    while (ended_ < Watchdog::kPlaces) endIfStuck();
    for (std::thread& thread : threads) thread.join();
  }

  /// The view is the host's, which has the first place.
  void act(std::size_t place) {
    Caller& caller = callers_[place];
    watchdog_.watch(place, [&] {
      if (place > 0 || caller.pick(10) > 0) return caller.act();
      log_.clear();
      manager().setViewInterface(caller.pick(2) == 0 ? nullptr : &view_);
    });
    ++operations_;
  }

  /// A thread that does not come back cannot be joined.
  void endIfStuck() const {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (watchdog_.longest() < kLongestOperation) return;
    std::cerr << "an operation has not returned for " << watchdog_.longest().count() << " ms\n";
    std::abort();
  }

  void expectNoneLostOrDoubled() {
    std::vector<std::string> wanted;
    for (const Caller& caller : callers_) {
      wanted.insert(wanted.end(), caller.titles().begin(), caller.titles().end());
    }
    std::vector<std::string> found;
    std::set<unsigned int> ids;
    auto* const copy = manager().getCopyofQueue();
    for (const Item* const item : *copy) {
      found.push_back(queue_text::titleOf(*item));
      EXPECT_TRUE(ids.insert(item->getId()).second);
    }
    manager().deleteCopyOfQueue(copy);
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(wanted));
  }

  void expectParked() {
    manager().pause();
    auto* const copy = manager().getCopyofQueue();
    for (const Item* const item : *copy) EXPECT_FALSE(plugin::isActive(item->getStatus()));
    manager().deleteCopyOfQueue(copy);
  }

  void expectSaved() {
    manager().setViewInterface(&view_);
    manager().updateSize(manager().at(0)->getId(), 1);
    EXPECT_EQ(written(), queue());
  }

  static constexpr std::chrono::seconds kLongestOperation{5};

  HostileLibrary hostile_{log_};
  TicketServices tickets_{log_};
  std::vector<Caller> callers_;
  Watchdog watchdog_;
  std::atomic<unsigned int> ended_{0};
  std::atomic<unsigned int> operations_{0};
};

TEST_F(Threads, LoseNoItemAndNeverWaitForEachOtherForEver) {
  const auto seed = static_cast<unsigned int>(std::random_device{}());
  SCOPED_TRACE("seed " + std::to_string(seed));
  actAtOnce(seed, seconds(countOr(3)));
  expectNoneLostOrDoubled();
  expectParked();
  expectSaved();
  EXPECT_EQ(hostile_.overlaps(), 0);
  std::cout << operations_ << " operations, " << hostile_.sessionCount() << " sessions"
            << std::endl;
}

}  // namespace
}  // namespace soak
