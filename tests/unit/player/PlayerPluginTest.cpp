#include <gmock/gmock.h>

#include <filesystem>
#include <memory>

#include "VeskPlayerX/InterfaceIds.h"
#include "playerx/framework/UserMessages.h"
#include "playerx/player/PlayerPlugin.h"
#include "tests/support/TempDir.h"
#include "tests/support/WaitFor.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeMessages.h"

namespace playerx {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct ReleasePlugin {
  void operator()(KPIM::Plugin* plugin) const { plugin->kpimRelease(); }
};

class PlayerPluginTest : public testing::Test {
 protected:
  support::TempDir folder;
  support::FakeContext context;
  support::FakeMessages messages;

  /// A player program that writes what it plays into a file, then plays for as long as the folder
  /// is there.
  std::unique_ptr<PlayerPlugin, ReleasePlugin> playerOf(const QString& command) {
    context.offer<UserMessages>(kUserMessagesId, &messages);
    return std::unique_ptr<PlayerPlugin, ReleasePlugin>(new PlayerPlugin(
        &context, command,
        [](const std::string& location) { return location == "http://h/a.avi" ? 77ull : 0ull; }));
  }

  QString recorder(const std::string& then) {
    const auto script = folder.write(
        "player.sh", "#!/bin/sh\nprintf %s \"$1\" > '" + (folder / "new").string() + "' && mv '" +
                         (folder / "new").string() + "' '" + played().string() + "'\n" + then);
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    return QString::fromStdString("\"" + script.string() + "\"");
  }

  std::filesystem::path played() const { return folder / "played"; }

  std::string waitForPlayed() {
    EXPECT_TRUE(support::waitFor([this] { return std::filesystem::exists(played()); }));
    return support::readFile(played());
  }
};

TEST_F(PlayerPluginTest, ItOffersThePlayerInterfaceAlone) {
  const auto player = playerOf("sh");
  void* face = nullptr;
  EXPECT_EQ(player->kpimGetInterface(VeskPlayerX::DIN_Player, &face), KPIM::kSuccess);
  EXPECT_EQ(face, static_cast<VeskPlayerX::PlayerInterface*>(player.get()));
  EXPECT_EQ(player->kpimGetInterface("x", &face), KPIM::kUnknownInterface);
}

TEST_F(PlayerPluginTest, MediaIsOpenedInTheUsersProgramThatIsNamed) {
  const auto player = playerOf(recorder(""));
  player->openMedia("/films/a b.avi");
  EXPECT_EQ(waitForPlayed(), "/films/a b.avi");
  EXPECT_THAT(messages.sentences, ElementsAre(HasSubstr("Playing /films/a b.avi with ")));
}

TEST_F(PlayerPluginTest, AMissingProgramIsSaid) {
  playerOf("no-such-player-program -x")->openMedia("/films/a.avi");
  EXPECT_THAT(messages.sentences,
              ElementsAre("no-such-player-program could not be started; install it, or name "
                          "another program with --player."));
}

TEST_F(PlayerPluginTest, TheMediaIdIsThatOfTheAddressWhileTheProgramRuns) {
  const auto player =
      playerOf(recorder("while [ -e '" + folder.path().string() + "/go' ]; do sleep 0.01; done"));
  folder.write("go", "");
  EXPECT_EQ(player->currentMediaId(), 0u);
  player->openMedia("http://h/a.avi");
  EXPECT_EQ(player->currentMediaId(), 77u);
  std::filesystem::remove(folder / "go");
  EXPECT_TRUE(support::waitFor([&] { return player->currentMediaId() == 0; }));
}

TEST_F(PlayerPluginTest, AFinishedDownloadIsLeftToTheFrontEnd) {
  playerOf("sh")->downloadFinished("/films/a.avi", 0);
  EXPECT_THAT(messages.sentences, IsEmpty());
}

}  // namespace
}  // namespace playerx
