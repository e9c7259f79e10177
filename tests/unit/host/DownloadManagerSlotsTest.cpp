#include <gtest/gtest.h>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "tests/support/VtableSlots.h"

namespace {

using support::slotOf;
using Item = VeskPlayerX::DownloadItemInterface;
using Manager = VeskPlayerX::DownloadManagerInterface;

struct ExtendedManager : Manager {
  virtual void behindTheLast() = 0;
};

TEST(Slots, DownloadManagerInterface) {
  EXPECT_EQ(slotOf(&Manager::setViewInterface), 2);
  EXPECT_EQ(slotOf(&Manager::getCopyofQueue), 3);
  EXPECT_EQ(slotOf(&Manager::deleteCopyOfQueue), 4);
  EXPECT_EQ(slotOf(&Manager::getNumberOfVideosInQueue), 5);
  EXPECT_EQ(slotOf(&Manager::zpsFileOpenedForPlayback), 6);
  EXPECT_EQ(slotOf(&Manager::add), 7);
  EXPECT_EQ(slotOf(&Manager::addTicket), 8);
  EXPECT_EQ(slotOf(&Manager::updateStatus), 9);
  EXPECT_EQ(slotOf(&Manager::updatePath), 10);
  EXPECT_EQ(slotOf(&Manager::updateSize), 11);
  EXPECT_EQ(slotOf(&Manager::updateDownloadProgress), 12);
  EXPECT_EQ(slotOf(&Manager::updateSlotAssignment), 13);
  EXPECT_EQ(slotOf(&Manager::setTicketAlreadyTorn), 14);
  EXPECT_EQ(slotOf(&Manager::setDownloadUrl), 15);
  EXPECT_EQ(slotOf(&Manager::setDownloadInfo), 16);
  EXPECT_EQ(slotOf(&Manager::setPlayable), 17);
  EXPECT_EQ(slotOf(&Manager::setTicketId), 18);
  EXPECT_EQ(slotOf(&Manager::isPaused), 19);
  EXPECT_EQ(slotOf(&Manager::pause), 20);
  EXPECT_EQ(slotOf(&Manager::resume), 21);
  EXPECT_EQ(slotOf(&Manager::cancel), 22);
  EXPECT_EQ(slotOf(&Manager::clearCompletedDownloads), 23);
  EXPECT_EQ(slotOf(&Manager::remove), 24);
  EXPECT_EQ(slotOf(&Manager::retry), 25);
  EXPECT_EQ(slotOf(&Manager::play), 26);
  EXPECT_EQ(slotOf(&Manager::moveUp), 27);
  EXPECT_EQ(slotOf(&Manager::moveDown), 28);
  EXPECT_EQ(slotOf(&Manager::moveToTop), 29);
  EXPECT_EQ(slotOf(&Manager::moveToBottom), 30);
  EXPECT_EQ(slotOf(&Manager::resumeDownloadingFile), 31);
  EXPECT_EQ(slotOf(&Manager::resumePlaybackForUrl), 32);
  EXPECT_EQ(slotOf(static_cast<Item* (Manager::*)(unsigned int)>(&Manager::get)), 33);
  EXPECT_EQ(slotOf(static_cast<Item* (Manager::*)(const std::wstring&)>(&Manager::get)), 34);
  EXPECT_EQ(slotOf(&ExtendedManager::behindTheLast), 35);
}

}  // namespace
