#include "bench/Player.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "bench/CompletedFilms.h"
#include "persistence/DownloadManagerPersistence.h"
#include "tests/support/TempDir.h"

namespace bench {

namespace fs = std::filesystem;
using playerx::session::PlayerSession;
using playerx::session::Request;

namespace {

/// Bytes flow without a notice for each.
constexpr std::chrono::milliseconds kLongestWait(1);

playerx::session::SessionOptions optionsOf(const fs::path& home, const fs::path& plugins) {
  // The platform may still be removing versions of the last queue itself.
  for (std::error_code failure; fs::remove_all(home, failure), fs::exists(home);) continue;
  playerx::session::SessionOptions options;
  options.pluginFolder = plugins;
  options.dataFolder = home / "data";
  options.mediaFolder = home / "films";
  return options;
}

}  // namespace

void writeQueueFile(const fs::path& file, int completedFilms) {
  // The element of one film over and over: what all of them take would show in what is measured.
  const support::TempDir folder;
  const fs::path one = folder / "one.xml";
  const CompletedFilms films(1);
  DownloadManagerPersistence::writeDownloadQueue(one.wstring(), films.items());
  const std::string text = support::readFile(one);
  const std::size_t begin = text.find("<DownloadItem "), end = text.find("</DownloadQueue>");

  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary);
  stream << text.substr(0, begin);
  for (int i = 0; i < completedFilms; ++i) {
    std::string element = text.substr(begin, end - begin);
    const std::string first = std::to_string(CompletedFilms::kFirstNumber);
    const std::string number = std::to_string(CompletedFilms::kFirstNumber + i);
    for (std::size_t at = element.find(first); at != std::string::npos;
         at = element.find(first, at + number.size())) {
      element.replace(at, first.size(), number);
    }
    stream << element;
  }
  stream << text.substr(end);
}

Player::Player(const fs::path& home, const fs::path& plugins, int completedFilms)
    : queueFile_(home / "data/downloadmanager.xml"),
      session_(optionsOf(home, plugins),
               {[this] { wake(); }, [](const std::string&) { return -1; }}) {
  if (completedFilms > 0) writeQueueFile(queueFile_, completedFilms);
}

void Player::open() {
  const std::string problem = session_.open(PlayerSession::Access::kChange);
  if (!problem.empty()) throw std::runtime_error(problem);
  service_ = std::make_unique<playerx::session::QueueService>(
      session_, playerx::model::QueueTracker::Keep::kUnlessComplete, [this] { wake(); },
      [](const std::string& address, const std::stop_token&) {
        return playerx::reasons::ProbeResult{address, {}, "", 0, 0};
      },
      [](const playerx::session::QueueEvent&) {});
}

void Player::start() { session_.start(); }

void Player::add(const std::string& url) {
  service_->handle({.action = Request::Action::kAdd, .inputs = {url}});
}

void Player::waitUntilIdle() {
  waitUntil([this] { return service_->watch().isIdle(); });
}

void Player::waitUntil(const std::function<bool()>& condition) {
  service_->update();
  while (!condition()) {
    if (waitForWake()) service_->update();
  }
}

std::uint64_t Player::arrived(const std::string& url) const {
  const auto transfer = session_.findTransfer(url);
  return transfer ? transfer->arrived : 0;
}

void Player::wake() {
  const std::lock_guard lock(mutex_);
  isWoken_ = true;
  changed_.notify_one();
}

/// False when there is nothing to look at.
bool Player::waitForWake() {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, kLongestWait, [this] { return isWoken_; });
  return std::exchange(isWoken_, false);
}

}  // namespace bench
