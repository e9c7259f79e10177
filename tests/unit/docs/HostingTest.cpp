#include <gtest/gtest.h>

#include <QCoreApplication>

#include "HostingExample.h"
#include "playerx/framework/PluginContext.h"
#include "playerx/settings/Folders.h"
#include "tests/support/TempDir.h"
#include "tests/support/fakes/FakeView.h"

namespace {

TEST(HostingTest, TheExampleOfThePageQueuesAFilm) {
  int count = 1;
  char name[] = "docs_test";
  char* arguments[] = {name, nullptr};
  const QCoreApplication application(count, arguments);
  const support::TempDir folder;
  playerx::setApplicationDataPath(QString::fromStdString(folder.path().string()));
  support::EventLog log;
  support::FakeView view(log);
  {
    playerx::PluginContext context({VESK_PLUGINS});
    EXPECT_TRUE(useDownloadManager(context, view));
    context.shutdown();
  }
  EXPECT_NE(support::readFile(folder / "downloadmanager.xml").find("films.example/one.mkv"),
            std::string::npos);
}

}  // namespace
