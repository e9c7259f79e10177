#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::minutes kBuildTime{4};

/// A machine on which the module and the development package are installed, with a server of films.
class ExamplesTest : public testing::Test {
 protected:
  ExamplesTest() {
    for (const char* component : {"module", "dev"}) {
      run({CMAKE, "--install", VESK_BUILD, "--prefix", installed(), "--component", component});
    }
    EXPECT_TRUE(server_.waitForOutput("\n")) << server_.errors();
  }

  std::string installed() const { return folder_ / "usr"; }

  /// The program of this target of examples/.
  std::string build(const std::string& host) const {
    const std::string build = folder_ / "build";
    const std::string sanitizers = SANITIZERS;
    run({CMAKE, "-S", installed() + "/share/doc/playerx-dev/examples", "-B", build, "-G", "Ninja",
         "-DCMAKE_PREFIX_PATH=" + installed(), "-DCMAKE_CXX_COMPILER=" COMPILER,
         "-DCMAKE_CXX_FLAGS=" + (sanitizers.empty() ? "" : "-fsanitize=" + sanitizers)});
    run({CMAKE, "--build", build, "--target", host});
    for (const auto& entry : fs::recursive_directory_iterator(build)) {
      if (entry.path().filename() == host && entry.is_regular_file()) return entry.path();
    }
    return host;
  }

  /// Exit status of the host, started by a user with a new home.
  int download(const std::string& host, const std::string& film) {
    support::Process process({.arguments = {host, address() + "/media/" + film},
                              .environment = {{"HOME", folder_ / "home"}},
                              .removed = {"XDG_DATA_HOME", "XDG_CONFIG_HOME"}});
    const int status = process.wait().value_or(-1);
    output_ = process.output();
    errors_ = process.errors();
    return status;
  }

  std::string address() const {
    return nlohmann::json::parse(
        server_.output().substr(0, server_.output().find('\n')))["address"];
  }

  void removeLibrariesOfThePlayer() const {
    for (const char* name : {"libkvpm.so", "libKPIM.so", "libKPXLibrary.so"}) {
      EXPECT_TRUE(fs::remove(fs::path(installed()) / "lib/playerx/host" / name)) << name;
    }
  }

  std::string filmAtHome(const std::string& name) const {
    return support::readFile(folder_ / ("home/Videos/Vesk/" + name));
  }

  std::string output_, errors_;

 private:
  static void run(const std::vector<std::string>& command) {
    support::Process process(command);
    ASSERT_EQ(process.wait(kBuildTime), 0) << process.output() << process.errors();
  }

  const support::TempDir folder_;
  support::Process server_{{DEMO_SERVER, "--stay", "--media", VESK_PROJECT "/demo/media"}};
};

std::string original(const std::string& film) {
  return support::readFile(fs::path(VESK_PROJECT "/demo/media") / film);
}

TEST_F(ExamplesTest, AMinimalHostDownloadsAFilm) {
  const std::string host = build("minimal-host");
  ASSERT_EQ(download(host, "counting.avi"), 0) << output_ << errors_;
  EXPECT_THAT(output_, testing::HasSubstr("counting.avi: completed, 100 %"));
  EXPECT_EQ(filmAtHome("counting.avi"), original("counting.avi"));
}

TEST_F(ExamplesTest, AHostOnLibrariesOfItsOwnDownloadsAFilm) {
  removeLibrariesOfThePlayer();
  const std::string host = build("own-platform-host");
  ASSERT_EQ(download(host, "counting.avi"), 0) << output_ << errors_;
  EXPECT_EQ(filmAtHome("counting.avi"), original("counting.avi"));
}

TEST_F(ExamplesTest, AHostSaysWhichFilmFailsAndIsJudgedByThoseOfItsRun) {
  const std::string host = build("minimal-host");
  EXPECT_EQ(download(host, "missing.avi"), 1) << output_ << errors_;
  EXPECT_THAT(output_, testing::HasSubstr("missing.avi: failed, 0 %"));
  EXPECT_EQ(download(host, "counting.avi"), 0) << output_ << errors_;
  EXPECT_THAT(output_, testing::Not(testing::HasSubstr("missing.avi")));
}

}  // namespace
