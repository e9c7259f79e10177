#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <string>

#include "download/HttpDownloadThread.h"
#include "item/DownloadItem.h"
#include "tests/support/Gate.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeDownloadLibrary.h"
#include "tests/support/fakes/FakeManager.h"
#include "tests/support/fakes/FakePlayer.h"
#include "tests/support/fakes/FakeServices.h"
#include "tests/support/fakes/FakeView.h"

namespace support {

/// A worker among fakes of its host, with a real HTTP server that announces `kLength` bytes for
/// every film, an empty media folder and plenty of space. Items have the id 7, sessions the ids
/// 1001, 1002, ...
class WorkerTest : public ::testing::Test {
 protected:
  static constexpr unsigned long long kLength = 7168;
  static constexpr unsigned long long kUid = 1001;

  WorkerTest();
  ~WorkerTest() override;

  // What there is.
  std::string media(const std::string& name) const { return (dir_ / "media" / name).string(); }
  std::string urlOf(const std::string& name) { return server_.url("/dir/" + name); }
  std::unique_ptr<DownloadItem> film(const std::string& name = "movie.vesk");
  std::unique_ptr<DownloadItem> filmToPlay();
  std::unique_ptr<DownloadItem> protectedFilm();
  VeskDrmDownloadAuthorization grant() const;
  static VeskDrmDownloadAuthorization refusal(int code);
  void putFile(const std::string& name, std::size_t bytes);
  /// A gate that outlives the server and the worker.
  Gate& gate() { return gates_.emplace_back(); }

  // What is done.
  void announceLength(const std::string& length);
  void start(std::unique_ptr<DownloadItem> item);
  /// Starts, and waits for the manager to hear that the transfer runs.
  void startAndFetch(std::unique_ptr<DownloadItem> item);
  /// Starts, and waits until reports on the session `uid` are handled as they come; one of 0 %
  /// has been.
  void startAndReport(std::unique_ptr<DownloadItem> item, unsigned long long uid = kUid);
  int ended();
  int run(std::unique_ptr<DownloadItem> item);
  /// Runs `action` on a thread of its own; true when it returned in time.
  std::future<void> elsewhere(std::function<void()> action);
  static bool returned(std::future<void>& action);

  // What happened.
  bool waitFor(const std::string& line) { return log_.waitFor(line); }
  std::vector<std::string> reports() const { return log_.lines("manager."); }
  std::vector<std::string> views() const { return log_.lines("view."); }

  std::deque<Gate> gates_;
  TempDir dir_;
  EventLog log_;
  ScriptedServer server_;
  FakeDownloadLibrary library_{log_};
  FakeServices services_{log_};
  FakePlayer player_{log_};
  FakeManager manager_{log_};
  FakeView view_{log_};
  FakeContext context_;
  std::unique_ptr<HttpDownloadThread> worker_;

 private:
  std::future<DownloadStatusEnumType> run_;
};

}  // namespace support
