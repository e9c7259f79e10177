#include <gtest/gtest.h>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "tests/support/VtableSlots.h"

namespace {

using support::slotOf;
using Item = VeskPlayerX::DownloadItemInterface;

struct ExtendedItem : Item {
  virtual void behindTheLast() = 0;
};

TEST(Slots, DownloadItemInterface) {
  EXPECT_EQ(slotOf(&Item::getUID), 2);
  EXPECT_EQ(slotOf(&Item::setUID), 3);
  EXPECT_EQ(slotOf(&Item::getId), 4);
  EXPECT_EQ(slotOf(&Item::setId), 5);
  EXPECT_EQ(slotOf(&Item::getPath), 6);
  EXPECT_EQ(slotOf(&Item::setPath), 7);
  EXPECT_EQ(slotOf(&Item::getUrl), 8);
  EXPECT_EQ(slotOf(&Item::setUrl), 9);
  EXPECT_EQ(slotOf(&Item::getSize), 10);
  EXPECT_EQ(slotOf(&Item::setSize), 11);
  EXPECT_EQ(slotOf(&Item::getPercentDownloaded), 12);
  EXPECT_EQ(slotOf(&Item::setPercentDownloaded), 13);
  EXPECT_EQ(slotOf(&Item::getTitle), 14);
  EXPECT_EQ(slotOf(&Item::setTitle), 15);
  EXPECT_EQ(slotOf(&Item::getStatus), 16);
  EXPECT_EQ(slotOf(&Item::setStatus), 17);
  EXPECT_EQ(slotOf(&Item::getContentProviderDisplayName), 18);
  EXPECT_EQ(slotOf(&Item::setContentProviderDisplayName), 19);
  EXPECT_EQ(slotOf(&Item::getContentEncryptionUsageId), 20);
  EXPECT_EQ(slotOf(&Item::setContentEncryptionUsageId), 21);
  EXPECT_EQ(slotOf(&Item::getTicket), 22);
  EXPECT_EQ(slotOf(&Item::setTicket), 23);
  EXPECT_EQ(slotOf(&Item::getTicketId), 24);
  EXPECT_EQ(slotOf(&Item::setTicketId), 25);
  EXPECT_EQ(slotOf(&Item::getTicketAlreadyTorn), 26);
  EXPECT_EQ(slotOf(&Item::setTicketAlreadyTorn), 27);
  EXPECT_EQ(slotOf(&Item::getEncrypted), 28);
  EXPECT_EQ(slotOf(&Item::setEncrypted), 29);
  EXPECT_EQ(slotOf(&Item::getSlotNumber), 30);
  EXPECT_EQ(slotOf(&Item::setSlotNumber), 31);
  EXPECT_EQ(slotOf(&Item::getReadyForProgressivePlayback), 32);
  EXPECT_EQ(slotOf(&Item::setReadyForProgressivePlayback), 33);
  EXPECT_EQ(slotOf(&Item::getAutoProgressivePlayback), 34);
  EXPECT_EQ(slotOf(&Item::setAutoProgressivePlayback), 35);
  EXPECT_EQ(slotOf(&Item::getTimeRemaining), 36);
  EXPECT_EQ(slotOf(&Item::setTimeRemaining), 37);
  EXPECT_EQ(slotOf(&Item::getLastProgressUpdateTime), 38);
  EXPECT_EQ(slotOf(&Item::setLastProgressUpdateTime), 39);
  EXPECT_EQ(slotOf(&Item::getDownloadInfo), 40);
  EXPECT_EQ(slotOf(&Item::setDownloadInfo), 41);
  EXPECT_EQ(slotOf(&ExtendedItem::behindTheLast), 42);
}

}  // namespace
