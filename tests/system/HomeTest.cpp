#include <gmock/gmock.h>

#include "tests/support/Nginx.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using testing::HasSubstr;

/// An account as those of services are.
constexpr char kAccountWithoutHome[] = "user:x:0:0::/:/bin/sh\n";

/// A user without HOME, whose account is the root of a namespace.
class HomeTest : public testing::Test {
 protected:
  support::TempDir folder;
  PlayerHome home;

  void SetUp() override {
    const std::string lack = lackOfNamespaces();
    ASSERT_EQ(lack, "");
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
      home.removeFromEnvironment(name);
    }
    home.nameNoFolders();
  }

  void haveAccounts(const std::string& lines) {
    home.mountFirst("mount --bind \"$0\" /etc/passwd", folder.write("accounts", lines));
  }
};

TEST_F(HomeTest, TheAccountNamesTheHomeFolder) {
  const support::Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  haveAccounts("user:x:0:0::" + (folder / "home").string() + ":/bin/sh\n");
  const PlayerResult result = home.run({"get", server.url("/a.avi")});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(sameContent(server.root() / "a.avi", folder / "home/Videos/Vesk/a.avi"));
  EXPECT_TRUE(
      std::filesystem::exists(folder / "home/.local/share/Vesk/VeskPlayerX/downloadmanager.xml"));
}

TEST_F(HomeTest, WithoutAnyTheFoldersAreAskedFor) {
  haveAccounts(kAccountWithoutHome);
  const PlayerResult result = home.run({"get"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("name the folders with --data and --media."));
}

TEST_F(HomeTest, FoldersThatAreNamedAreEnough) {
  haveAccounts(kAccountWithoutHome);
  home.addOptions({"--data", folder / "data", "--media", folder / "media"});
  EXPECT_EQ(home.run({"get"}).status, 0);
}

}  // namespace
}  // namespace system_test
