#include <gtest/gtest.h>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInterface.h"
#include "KPIM/Context.h"
#include "KPIM/Plugin.h"
#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "kvpm/IRunnable.h"
#include "tests/support/VtableSlots.h"

// A host and a plug-in that were compiled apart find each other's operations by their slots alone.

namespace {

using support::slotOf;

// An operation added to an interface comes to lie behind its last one.
template <class Interface>
struct Extended : Interface {
  using Interface::Interface;
  virtual void behindTheLast() = 0;
};

template <class Interface>
int slotCount() {
  return slotOf(&Extended<Interface>::behindTheLast);
}

TEST(Slots, Plugin) {
  using KPIM::Plugin;
  EXPECT_EQ(slotOf(&Plugin::kpimRetain), 2);
  EXPECT_EQ(slotOf(&Plugin::kpimRelease), 3);
  EXPECT_EQ(slotOf(&Plugin::kpimHoldCount), 4);
  EXPECT_EQ(slotOf(&Plugin::kpimGetPluginInfo), 5);
  EXPECT_EQ(slotOf(&Plugin::kpimGetPluginContext), 6);
  EXPECT_EQ(slotOf(&Plugin::kpimGetInterface), 7);
  EXPECT_EQ(slotCount<Plugin>(), 8);
}

TEST(Slots, Context) {
  EXPECT_EQ(slotOf(&KPIM::Context::getPluginInstance), 2);
  EXPECT_EQ(slotCount<KPIM::Context>(), 3);
  EXPECT_EQ(slotOf(&KPIM::Context::PluginFilter::accepts), 2);
  EXPECT_EQ(slotOf(&KPIM::Context::PluginInfoSelector::less), 2);
}

TEST(Slots, ShutdownInterface) {
  using VeskPlayerX::ShutdownInterface;
  EXPECT_EQ(slotOf(&ShutdownInterface::Shutdown), 2);
  EXPECT_EQ(slotCount<ShutdownInterface>(), 3);
}

TEST(Slots, DownloadManagerViewInterface) {
  using View = VeskPlayerX::DownloadManagerViewInterface;
  EXPECT_EQ(slotOf(&View::downloadListChanged), 2);
  EXPECT_EQ(slotOf(&View::downloadItemChanged), 3);
  EXPECT_EQ(slotOf(&View::downloadItemsAdded), 4);
  EXPECT_EQ(slotOf(&View::keepsRunningWhenFinished), 5);
  EXPECT_EQ(slotOf(&View::chooseSlot), 6);
  EXPECT_EQ(slotOf(&View::showAuthorizationError), 7);
  EXPECT_EQ(slotOf(&View::notEnoughSpace), 8);
  EXPECT_EQ(slotOf(&View::downloadUrlFailed), 9);
  EXPECT_EQ(slotOf(&View::downloadBroken), 10);
  EXPECT_EQ(slotOf(&View::refreshItem), 11);
  EXPECT_EQ(slotCount<View>(), 12);
}

TEST(Slots, PlayerInterface) {
  using VeskPlayerX::PlayerInterface;
  EXPECT_EQ(slotOf(&PlayerInterface::openMedia), 2);
  EXPECT_EQ(slotOf(&PlayerInterface::downloadFinished), 3);
  EXPECT_EQ(slotOf(&PlayerInterface::currentMediaId), 4);
  EXPECT_EQ(slotCount<PlayerInterface>(), 5);
}

TEST(Slots, ZPSServicesInterface) {
  using VeskPlayerX::ZPSServicesInterface;
  EXPECT_EQ(slotOf(&ZPSServicesInterface::readTicket), 2);
  EXPECT_EQ(slotOf(&ZPSServicesInterface::isReady), 3);
  EXPECT_EQ(slotOf(&ZPSServicesInterface::authorizeDownload), 4);
  EXPECT_EQ(slotOf(&ZPSServicesInterface::showError), 5);
  EXPECT_EQ(slotOf(&ZPSServicesInterface::confirmDownload), 6);
  EXPECT_EQ(slotCount<ZPSServicesInterface>(), 7);
}

TEST(Slots, DownloadInterface) {
  using KPB::DownloadInterface;
  EXPECT_EQ(slotOf(&DownloadInterface::setCallback), 2);
  EXPECT_EQ(slotOf(&DownloadInterface::startSession), 3);
  EXPECT_EQ(slotOf(&DownloadInterface::stopSession), 4);
  EXPECT_EQ(slotCount<DownloadInterface>(), 5);
}

TEST(Slots, DownloadCallback) {
  using KPB::DownloadCallback;
  EXPECT_EQ(slotOf(&DownloadCallback::httpTransferBegan), 2);
  EXPECT_EQ(slotOf(&DownloadCallback::updateProgress), 3);
  EXPECT_EQ(slotOf(&DownloadCallback::httpTransferComplete), 4);
  EXPECT_EQ(slotOf(&DownloadCallback::httpTransferBroke), 5);
  EXPECT_EQ(slotOf(&DownloadCallback::httpHeaderReceived), 6);
  EXPECT_EQ(slotCount<DownloadCallback>(), 7);
}

TEST(Slots, Runnable) {
  EXPECT_EQ(slotOf(&kvpm::IRunnable::runThread), 2);
  EXPECT_EQ(slotCount<kvpm::IRunnable>(), 3);
}

}  // namespace
