#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <memory>
#include <sstream>

#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/WaitFor.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

namespace fs = std::filesystem;

using support::Process;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

constexpr std::uint64_t kSlowFilmSize = 8'000'000;

/// A rate at which a film of that size arrives as long as the test needs it to.
constexpr char kCrawl[] = "100K";

/// The window's process, without a screen, and the command line beside it.
class WindowTest : public testing::Test {
 protected:
  WindowTest() {
    home.setEnvironment("QT_QPA_PLATFORM", "offscreen");
    home.setEnvironment("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    home.setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent");
  }

  std::unique_ptr<Process> startWindow(const std::vector<std::string>& inputs = {}) {
    support::ProcessOptions options = home.startOptions(inputs);
    for (std::string& argument : options.arguments) {
      if (argument.ends_with("/playerx-cli")) argument = PLAYERX;
    }
    std::erase(options.arguments, "--json");
    return std::make_unique<Process>(options);
  }

  /// The window's program where there is nothing to draw on; its exit status.
  static int runWithoutScreen(const std::string& argument, std::string& printed) {
    Process process({.arguments = {PLAYERX, argument},
                     .removed = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}});
    const int status = process.wait().value_or(-1);
    printed = process.output() + process.errors();
    return status;
  }

  std::string offerSlow(const std::string& name) {
    writeDistinctFile(slow.root() / name, kSlowFilmSize);
    return slow.url("/" + name);
  }

  std::string offerLarge(const std::string& name) {
    writeDistinctFile(quick.root() / name, kSlowFilmSize);
    return quick.url("/" + name);
  }

  std::string offerQuick(const std::string& name) {
    quick.serve(name, distinctBytes(5000));
    return quick.url("/" + name);
  }

  bool isListed(const std::string& title) {
    return support::waitFor([&] {
      const std::vector<Json> queue = home.queue();
      return std::any_of(queue.begin(), queue.end(),
                         [&title](const Json& item) { return item["title"] == title; });
    });
  }

  /// Adds the address; its number. They grow, by two at least from one added item to the next.
  std::int64_t addedId(const std::string& url) {
    const std::vector<Json> added = home.run({"add", url}).events("added");
    return added.size() == 1 ? added.front()["id"].get<std::int64_t>() : -1;
  }

  /// Whether the process that has the queue, which may have to start first, takes this rate.
  bool isLimited(const std::string& rate) {
    return support::waitFor([&] { return home.run({"limit", rate}).status == 0; });
  }

  bool isThere(const std::string& film) {
    return support::waitFor([&] {
      const std::vector<std::string> films = home.films();
      return std::find(films.begin(), films.end(), film) != films.end();
    });
  }

  /// Descriptors of the process for files in the folder of unfinished films.
  long openPartials(const Process& process) {
    const fs::path folder = "/proc/" + std::to_string(process.pid()) + "/fd";
    long count = 0;
    std::error_code error;
    for (const auto& link : fs::directory_iterator(folder, error)) {
      const std::string file = fs::read_symlink(link, error);
      if (file.starts_with((home.data() / "partial").string())) ++count;
    }
    return count;
  }

  support::Nginx slow{{.limitRate = "1m"}};
  support::Nginx quick;
  PlayerHome home;
};

TEST_F(WindowTest, WithoutAScreenTheProgramSaysSo) {
  std::string printed;
  EXPECT_EQ(runWithoutScreen("http://films.example/a.avi", printed), 1);
  EXPECT_EQ(printed, "playerx: there is no screen; `playerx-cli` works without one.\n");
  EXPECT_EQ(runWithoutScreen("--version", printed), 0);
  EXPECT_THAT(printed, HasSubstr("1.0.0"));
  EXPECT_EQ(runWithoutScreen("--help", printed), 0);
}

TEST_F(WindowTest, WrongUsageIsToldFromAFailure) {
  Process window(
      {.arguments = {PLAYERX, "--bogus"}, .environment = {{"QT_QPA_PLATFORM", "offscreen"}}});
  EXPECT_EQ(window.wait(), 2);
  EXPECT_THAT(window.errors(), HasSubstr("playerx: Unknown option 'bogus'"));
}

TEST_F(WindowTest, TooFewFilesAreSaidBeforeThereIsAWindow) {
  for (const int most : {12, 20, 31}) {
    Process window(
        {.arguments = {"sh", "-c", "ulimit -n " + std::to_string(most) + "; exec \"$0\"", PLAYERX},
         .environment = {{"QT_QPA_PLATFORM", "offscreen"}}});
    EXPECT_EQ(window.wait(), 1) << most;
    EXPECT_THAT(window.errors(), HasSubstr("Only " + std::to_string(most) + " files")) << most;
  }
}

TEST_F(WindowTest, AFolderThatIsNotNamedInUtf8IsSaid) {
  const support::TempDir folder;
  home.addOptions({"--data", folder / "\xFF"});
  const auto window = startWindow();
  EXPECT_EQ(window->wait(), 1);
  EXPECT_THAT(window->errors(), HasSubstr("the name is not text in UTF-8"));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(WindowTest, DownloadsWhatItIsStartedWith) {
  const auto window = startWindow({offerQuick("a.avi")});
  EXPECT_TRUE(isThere("a.avi")) << window->errors();
  window->send(SIGTERM);
  EXPECT_EQ(window->wait(), 0) << window->errors();
}

TEST_F(WindowTest, TheCommandLineWorksBesideIt) {
  const auto window = startWindow({offerSlow("a.avi")});
  ASSERT_TRUE(isListed("a.avi")) << window->errors();
  const PlayerResult result = home.run({"get", offerQuick("b.avi")});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  EXPECT_THAT(home.films(), Contains("b.avi"));
  EXPECT_EQ(home.run({"remove", "1"}).status, 0);
  EXPECT_TRUE(window->running());
}

TEST_F(WindowTest, ASecondStartHandsItsArgumentsOver) {
  const auto window = startWindow({offerQuick("a.avi")});
  ASSERT_TRUE(isThere("a.avi")) << window->errors();
  const auto second = startWindow({offerQuick("b.avi")});
  EXPECT_EQ(second->wait(), 0) << second->errors();
  EXPECT_TRUE(isThere("b.avi")) << window->errors();
  EXPECT_TRUE(window->running());
}

TEST_F(WindowTest, UsesTheQueueOfACommandThatHasIt) {
  Process get(home.startOptions({"get", "--limit-rate", kCrawl, offerLarge("a.avi")}));
  ASSERT_TRUE(get.waitForOutput("\"percent\":1")) << get.errors();
  const auto window = startWindow({offerQuick("b.avi")});
  EXPECT_TRUE(get.waitForOutput("b.avi")) << window->errors();
  EXPECT_TRUE(isLimited("none"));
  EXPECT_EQ(get.wait(), 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
}

TEST_F(WindowTest, GoesOnWithTheQueueWhenTheCommandThatHadItEnds) {
  Process get(home.startOptions({"get", "--limit-rate", kCrawl, offerLarge("a.avi")}));
  ASSERT_TRUE(get.waitForOutput("\"percent\":1")) << get.errors();
  const auto window = startWindow({offerLarge("b.avi")});
  ASSERT_TRUE(get.waitForOutput("b.avi")) << window->errors();
  get.send(SIGINT);
  EXPECT_EQ(get.wait(), 130);
  EXPECT_TRUE(isThere("a.avi")) << window->errors();
  EXPECT_TRUE(isThere("b.avi")) << window->errors();
}

// A long list, on a busy machine.
constexpr std::chrono::minutes kAddingTakes{5};

TEST_F(WindowTest, ALongListOfAddressesKeepsNobodyWaitingAndIsNotLost) {
  constexpr std::size_t kAddresses = 1500;
  std::vector<std::string> inputs;
  for (std::size_t i = 0; i < kAddresses; ++i) {
    inputs.push_back("http://127.0.0.1:1/" + std::to_string(i) + ".avi");
  }
  const auto window = startWindow(inputs);
  // The other command must start while they are added: nothing but its start may take time.
  ASSERT_TRUE(support::waitFor([this] { return fs::exists(home.data() / "queue.socket"); }));
  const std::int64_t between = addedId("http://127.0.0.1:1/between.avi");
  ASSERT_GT(between, 0);
  ASSERT_TRUE(isListed(std::to_string(kAddresses - 1) + ".avi")) << window->errors();
  const std::int64_t later = addedId("http://127.0.0.1:1/later.avi");
  EXPECT_GT(later - between, 1000) << "nearly all of the list came first";
  window->send(SIGTERM);
  EXPECT_EQ(window->wait(kAddingTakes), 0) << window->errors();
  EXPECT_THAT(home.queue(), SizeIs(kAddresses + 2));
}

TEST_F(WindowTest, AProtectedTicketBehindALongListIsReadAtTheEnd) {
  support::ScriptedServer services;
  services.always(support::Script::answer(support::okResponse(
      R"({"records":[{"ticket":"t","title":"The last","usageId":1}],"ready":false})")));
  home.addOptions({"--services", services.url("")});
  const support::TempDir folder;
  std::vector<std::string> inputs;
  for (int i = 0; i < 1500; ++i) {
    inputs.push_back("http://127.0.0.1:1/" + std::to_string(i) + ".avi");
  }
  inputs.push_back(folder.write("t.tix", "VeskSealedTicket 1\nx"));
  const auto window = startWindow(inputs);
  ASSERT_TRUE(isListed("0.avi")) << window->errors();
  window->send(SIGTERM);
  EXPECT_EQ(window->wait(kAddingTakes), 0) << window->errors();
  EXPECT_TRUE(isListed("The last")) << window->errors();
}

TEST_F(WindowTest, WhatHasArrivedIsKeptWhenItEnds) {
  auto window = startWindow({offerSlow("a.avi")});
  ASSERT_TRUE(isListed("a.avi"));
  window->send(SIGTERM);
  EXPECT_EQ(window->wait(), 0);
  window = startWindow();
  EXPECT_TRUE(isThere("a.avi")) << window->errors();
}

#ifdef PLAYERX_SHOWS_FILMS
/// Bytes of film that the server has sent.
std::uint64_t sentBytes(const support::Nginx& server) {
  std::istringstream lines(server.accessLog());
  std::uint64_t sum = 0;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string method, target;
    int status = 0;
    std::uint64_t bytes = 0;
    words >> method >> target >> status >> bytes;
    if (method == "GET") sum += bytes;
  }
  return sum;
}

TEST_F(WindowTest, AFilmThatIsWatchedWhileItArrivesIsFetchedOnce) {
  fs::copy_file(DEMO_FILM, quick.root() / "life.mkv");
  fs::create_directories(home.data());
  std::ofstream(home.data() / "window.ini") << "[Window]\nPlayAutomatically=true\n";
  const auto window = startWindow();
  ASSERT_TRUE(isLimited("10K")) << window->errors();
  ASSERT_EQ(home.run({"add", quick.url("/life.mkv")}).status, 0);
  // Written by the transfer, read by the player.
  EXPECT_TRUE(support::waitFor([&] { return openPartials(*window) > 1; })) << window->errors();
  EXPECT_TRUE(isLimited("none"));
  EXPECT_TRUE(isThere("life.mkv")) << window->errors();
  EXPECT_EQ(sentBytes(quick), fs::file_size(DEMO_FILM)) << quick.accessLog();
}
#endif

TEST_F(WindowTest, AFullDiskEndsTheFilmAndNotTheWindow) {
  const std::string lack = lackOfNamespaces();
  ASSERT_EQ(lack, "");
  fs::create_directories(home.media());
  home.mountFirst("mount -t tmpfs -o size=1m films \"$0\"", home.media());
  const auto window = startWindow({offerLarge("a.avi")});
  EXPECT_TRUE(support::waitFor([&] {
    return home.run({"list"}).output.find("\"no_space\"") != std::string::npos;
  })) << window->errors();
  ASSERT_EQ(home.run({"add", offerQuick("b.avi")}).status, 0);
  EXPECT_TRUE(support::waitFor([&] {
    return home.run({"list"}).output.find("\"status\":\"completed\"") != std::string::npos;
  })) << "a film for which there is room is downloaded";
  EXPECT_TRUE(window->running());
}

}  // namespace
}  // namespace system_test
