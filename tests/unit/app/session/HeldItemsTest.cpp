#include <gmock/gmock.h>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/session/HeldItems.h"
#include "tests/unit/app/FakeSession.h"

namespace playerx::session {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HeldItemsTest : public testing::Test {
 protected:
  HeldItems::Queue queue() { return model::snapshotOf(fake_.session().manager()); }

  std::string updated(const DownloadItem& item, DownloadStatusEnumType status) const {
    return "manager.updateStatus " + std::to_string(item.getId()) + " " + std::to_string(status);
  }

  /// What the manager was asked since the last call, reading left out.
  std::vector<std::string> calls() {
    std::vector<std::string> lines = fake_.log.lines("manager.");
    fake_.log.clear();
    return lines;
  }

  FakeSession fake_;
  HeldItems held_{fake_.session()};
};

TEST_F(HeldItemsTest, AnItemThatTheManagerQueuesIsHeldAgain) {
  DownloadItem& item = fake_.module.put("http://h/a.avi");
  held_.hold(queue().front(), queue());
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusStopped)));
  item.setStatus(DownloadStatusQueued);
  held_.holdAgain(queue());
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusStopped)));
}

TEST_F(HeldItemsTest, AnItemThatTheManagerQueuesIsStoppedWhileTheViewIsTold) {
  DownloadItem& item = fake_.module.put("http://h/a.avi");
  held_.hold(queue().front(), queue());
  item.setStatus(DownloadStatusQueued);
  calls();
  fake_.module.view()->downloadListChanged();
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusStopped)));
  item.setStatus(DownloadStatusDownloading);
  fake_.module.view()->downloadListChanged();
  EXPECT_THAT(calls(), IsEmpty());
  held_.letGo(item.getId());
  calls();
  item.setStatus(DownloadStatusQueued);
  fake_.module.view()->downloadListChanged();
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HeldItemsTest, AnItemThatIsLetGoIsNotHeldAgain) {
  DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusStopped);
  held_.adopt(queue());
  held_.letAllGo(queue());
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusQueued)));
  item.setStatus(DownloadStatusQueued);
  held_.holdAgain(queue());
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(HeldItemsTest, OnlyAHeldItemThatIsQueuedIsAboutToBeHeld) {
  DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusStopped);
  held_.adopt(queue());
  QueueEvent event{QueueEvent::Kind::kChanged, queue().front()};
  EXPECT_FALSE(held_.isBeforeHold(event));
  item.setStatus(DownloadStatusQueued);
  event.item = queue().front();
  EXPECT_TRUE(held_.isBeforeHold(event));
  held_.letGo(event.item.id);
  EXPECT_FALSE(held_.isBeforeHold(event));
}

TEST_F(HeldItemsTest, OnlyTheItemThatIsTransferredIsStoppedForAChange) {
  fake_.module.put("http://h/a.avi", DownloadStatusDownloading);
  fake_.module.put("http://h/b.avi");
  fake_.session().start();
  calls();
  whileStopped(fake_.session(), queue(), queue()[1], [] {});
  EXPECT_THAT(calls(), IsEmpty());
  whileStopped(fake_.session(), queue(), queue()[0], [] {});
  EXPECT_THAT(calls(), ElementsAre("manager.pause", "manager.resume"));
}

}  // namespace
}  // namespace playerx::session
