#include <gmock/gmock.h>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/session/StoppedItems.h"
#include "tests/unit/app/FakeSession.h"

namespace playerx::session {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StoppedItemsTest : public testing::Test {
 protected:
  StoppedItems::Queue queue() { return model::snapshotOf(fake_.session().manager()); }

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
  StoppedItems stopped_{fake_.session()};
};

TEST_F(StoppedItemsTest, AnItemThatTheManagerQueuesIsStoppedAgain) {
  DownloadItem& item = fake_.module.put("http://h/a.avi");
  stopped_.stop(queue().front(), queue());
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusStopped)));
  item.setStatus(DownloadStatusQueued);
  stopped_.stopAgain(queue());
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusStopped)));
}

TEST_F(StoppedItemsTest, AnItemThatTheManagerQueuesIsStoppedWhileTheViewIsTold) {
  DownloadItem& item = fake_.module.put("http://h/a.avi");
  stopped_.stop(queue().front(), queue());
  item.setStatus(DownloadStatusQueued);
  calls();
  fake_.module.view()->downloadListChanged();
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusStopped)));
  item.setStatus(DownloadStatusDownloading);
  fake_.module.view()->downloadListChanged();
  EXPECT_THAT(calls(), IsEmpty());
  stopped_.letGo(item.getId());
  calls();
  item.setStatus(DownloadStatusQueued);
  fake_.module.view()->downloadListChanged();
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(StoppedItemsTest, AnItemThatIsLetGoIsNotStoppedAgain) {
  DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusStopped);
  stopped_.adopt(queue());
  stopped_.letAllGo(queue());
  EXPECT_THAT(calls(), ElementsAre(updated(item, DownloadStatusQueued)));
  item.setStatus(DownloadStatusQueued);
  stopped_.stopAgain(queue());
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(StoppedItemsTest, OnlyAStoppedItemThatIsQueuedIsAboutToBeStopped) {
  DownloadItem& item = fake_.module.put("http://h/a.avi", DownloadStatusStopped);
  stopped_.adopt(queue());
  QueueEvent event{QueueEvent::Kind::kChanged, queue().front()};
  EXPECT_FALSE(stopped_.isBeforeStop(event));
  item.setStatus(DownloadStatusQueued);
  event.item = queue().front();
  EXPECT_TRUE(stopped_.isBeforeStop(event));
  stopped_.letGo(event.item.id);
  EXPECT_FALSE(stopped_.isBeforeStop(event));
}

TEST_F(StoppedItemsTest, OnlyTheItemThatIsTransferredIsStoppedForAChange) {
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
