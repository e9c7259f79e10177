#include <gtest/gtest.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "playerx/window/dialogs/AddAddressesDialog.h"
#include "playerx/window/dialogs/PreferencesDialog.h"

namespace playerx::window {
namespace {

bool canAccept(QDialog& dialog) {
  const auto* const box = dialog.findChild<QDialogButtonBox*>();
  for (QAbstractButton* const button : box->buttons()) {
    if (box->buttonRole(button) == QDialogButtonBox::AcceptRole) return button->isEnabled();
  }
  return false;
}

TEST(AddAddressesDialogTest, SaysWhatItMakesOfTheText) {
  AddAddressesDialog dialog(QStringLiteral("https://a.example/1.avi\nnonsense"));
  EXPECT_EQ(dialog.inputs().size(), 1);
  EXPECT_TRUE(canAccept(dialog));
  EXPECT_EQ(
      summaryOf(inputsInText(QStringLiteral("https://a.example/1.avi\nnonsense"))),
      QStringLiteral("1 address(es) or ticket(s) found. 1 line(s) left out, such as “nonsense”."));
}

TEST(AddAddressesDialogTest, HasNothingToAddWithoutAnAddress) {
  AddAddressesDialog dialog(QString{});
  EXPECT_FALSE(canAccept(dialog));
  dialog.setText(QStringLiteral("not an address"));
  EXPECT_FALSE(canAccept(dialog));
}

TEST(AddAddressesDialogTest, TakesTenThousandPastedAddresses) {
  QString text;
  for (int i = 0; i < 10'000; ++i) text += QStringLiteral("https://a.example/%1.avi\n").arg(i);
  EXPECT_EQ(AddAddressesDialog(text).inputs().size(), 10'000);
}

QueuePreferences someQueue() {
  QueuePreferences queue;
  queue.mediaFolder = QStringLiteral("/films");
  queue.proxy = QueuePreferences::kOwnProxy;
  queue.proxyAddress = QStringLiteral("http://proxy.example:8080");
  queue.speedLimit = 2'500'000;
  queue.authorityFile = QStringLiteral("/ca.pem");
  queue.servicesAddress = QStringLiteral("https://services.example");
  return queue;
}

TEST(PreferencesDialogTest, GivesBackWhatItWasGiven) {
  WindowPreferences window;
  window.playsAutomatically = true;
  window.tellsWhenDone = false;
  window.closing = WindowPreferences::kGoOnInTray;
  PreferencesDialog dialog(someQueue(), window);
  EXPECT_EQ(dialog.queuePreferences(), someQueue());
  EXPECT_EQ(dialog.windowPreferences(), window);
  EXPECT_TRUE(canAccept(dialog));
}

TEST(PreferencesDialogTest, RefusesWhatCannotBeUsed) {
  QueuePreferences queue = someQueue();
  EXPECT_EQ(complaintAbout(queue), QString());
  queue.proxyAddress = QStringLiteral("proxy.example");
  EXPECT_FALSE(complaintAbout(queue).isEmpty());
  EXPECT_FALSE(canAccept(*std::make_unique<PreferencesDialog>(queue, WindowPreferences())));
  queue = someQueue();
  queue.mediaFolder = QStringLiteral("films");
  EXPECT_FALSE(complaintAbout(queue).isEmpty());
  queue = someQueue();
  queue.servicesAddress = QStringLiteral("services.example");
  EXPECT_FALSE(complaintAbout(queue).isEmpty());
}

}  // namespace
}  // namespace playerx::window
