#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QTcpServer>
#include <iostream>

#include "playerx/window/dialogs/AddAddressesDialog.h"
#include "tests/unit/window/Heartbeat.h"
#include "tests/unit/window/LiveQueue.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/WindowFixture.h"

namespace playerx::window {
namespace {

/// What people and machines do wrong, in a window with the download manager at work.
class BadInputTest : public testing::Test {
 protected:
  ~BadInputTest() override {
    std::cout << "longest gap " << heart_.longestGapMs() << " ms, longest work "
              << heart_.longestWorkMs() << " ms\n";
  }

  /// Whether the strip comes to say something with these words.
  static bool says(MainWindow& window, const QString& words) {
    return QTest::qWaitFor([&] { return partOf<MessageStrip>(window).text().contains(words); },
                           30'000);
  }

  static bool shows(MainWindow& window, int films) {
    return QTest::qWaitFor([&] { return partOf<FilmModel>(window).rowCount() == films; }, 90'000);
  }

  Heartbeat heart_;
};

class PastedNonsenseTest : public WindowTest, public testing::WithParamInterface<const char*> {};

TEST_P(PastedNonsenseTest, IsNeitherOfferedNorAdded) {
  QApplication::clipboard()->setText(QString::fromUtf8(GetParam()));
  queue({film(1)});
  EXPECT_FALSE(action(Verb::kPaste).isEnabled());
  EXPECT_TRUE(action(Verb::kPaste)
                  .toolTip()
                  .contains(QStringLiteral("The clipboard holds no address and no ticket.")));
  select({1});
  press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(queue_.take().isEmpty());
  AddAddressesDialog dialog(QString::fromUtf8(GetParam()));
  EXPECT_TRUE(dialog.inputs().isEmpty());
  QApplication::clipboard()->clear();
}

INSTANTIATE_TEST_SUITE_P(Kinds, PastedNonsenseTest,
                         testing::Values("see you tonight", "mailto:a@b.example", "https://",
                                         "javascript:alert(1)",
                                         "\xE2\x80\xAE"
                                         "ivA.1/moc",
                                         "C:\\films\\a.avi", "a.avi", "\x01\x02"));

/// Takes every connection and never answers.
class SilentServer : public QTcpServer {
 public:
  SilentServer() { EXPECT_TRUE(listen(QHostAddress::LocalHost)); }

  QStringList addresses(int count) const {
    QStringList addresses;
    for (int i = 0; i < count; ++i) {
      addresses << QStringLiteral("http://127.0.0.1:%1/%2.avi").arg(serverPort()).arg(i);
    }
    return addresses;
  }
};

TEST_F(BadInputTest, AThousandPastedAddressesAreAllQueued) {
  const SilentServer server;
  LiveQueue live;
  ASSERT_TRUE(live.isShown());
  const QStringList addresses = server.addresses(1000);
  QApplication::clipboard()->setText(addresses.join(u'\n'));
  partOf<ActionSet>(live.window()).of(Verb::kPaste)->trigger();
  EXPECT_TRUE(shows(live.window(), 1000));
  EXPECT_EQ(partOf<FilmModel>(live.window()).films().back().address, addresses.last());
  QApplication::clipboard()->clear();
}

TEST_F(BadInputTest, ATicketOfSixtyMegabytesIsRefused) {
  LiveQueue live;
  ASSERT_TRUE(live.isShown());
  const QString ticket = live.file(QStringLiteral("large.tix"));
  QFile file(ticket);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("TixVeskVersion=1\n" + QByteArray(60'000'000, 'x'));
  file.close();
  live.window().take({ticket});
  EXPECT_TRUE(says(live.window(), QStringLiteral("the ticket names no film")))
      << partOf<MessageStrip>(live.window()).text().toStdString();
  EXPECT_TRUE(file.exists());
}

TEST_F(BadInputTest, AMissingModuleIsNamed) {
  const QTemporaryDir empty;
  LiveQueue live({.plugins = empty.path()});
  EXPECT_TRUE(says(live.window(), empty.path()))
      << partOf<MessageStrip>(live.window()).text().toStdString();
  live.window().take({live.freshAddress()});
  EXPECT_TRUE(live.window().isVisible());
}

TEST_F(BadInputTest, AFolderThatAnotherProcessHoldsIsWaitedForAndThenUsed) {
  LiveQueue live({.isHeld = true});
  live.window().take({live.freshAddress()});
  EXPECT_TRUE(says(live.window(), live.data()))
      << partOf<MessageStrip>(live.window()).text().toStdString();
  live.releaseFolder();
  EXPECT_TRUE(shows(live.window(), 1)) << "nothing that was asked for meanwhile is lost";
  EXPECT_EQ(partOf<MessageStrip>(live.window()).text(), QString());
}

/// The queue's thread is kept busy here, so an operation that waited for it would not return before
/// the queue has told anything.
TEST_F(BadInputTest, NoOperationWaitsForTheQueue) {
  LiveQueue live({.isHeld = true});
  SessionQueue& queue = live.queue();
  QSignalSpy lost(&queue, &WindowQueue::lost);
  queue.add({live.freshAddress()});
  queue.readTicket(QStringLiteral("/nowhere/one.tix"));
  queue.pauseAll();
  queue.resumeAll();
  queue.stop({1});
  queue.goOn({1});
  queue.retry({1});
  queue.move({1}, Move::kUp);
  queue.moveBefore({1}, 0);
  queue.play(1);
  queue.chooseSlot(1, 0);
  QueuePreferences preferences;
  preferences.mediaFolder = live.media();
  queue.setPreferences(preferences);
  queue.remove({1}, false);
  EXPECT_TRUE(lost.isEmpty());
  EXPECT_TRUE(lost.wait(30'000)) << "by then the thread has given up";
}

}  // namespace
}  // namespace playerx::window
