#include "tests/unit/download/WorkerFixture.h"

#include <QSettings>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <utility>

#include "KPX/KPXPreferences.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "tests/unit/download/HostPlaces.h"

namespace support {
namespace {

constexpr std::uint64_t kPlenty = 1'000'000'000'000;

/// A future's destructor would wait for ever: better to end the program with a word.
template <class T>
void requireEnd(std::future<T>& future) {
  if (future.wait_for(kGenerousDeadline) == std::future_status::ready) return;
  std::cerr << "a call of the worker never returned" << std::endl;
  std::abort();
}

}  // namespace

WorkerTest::WorkerTest() {
  std::filesystem::create_directory(dir_ / "media");
  const QString folder = QString::fromStdString((dir_ / "media").string());
  hostPlaces() = {QString::fromStdString((dir_ / "partial").string()), folder, kPlenty, kPlenty};
  KPXPreferences::userSettings =
      new QSettings(QString::fromStdString((dir_ / "settings.ini").string()), QSettings::IniFormat);
  KPXPreferences::userSettings->setValue(KPXPreferences::MediaFolder, folder);
  announceLength(std::to_string(kLength));
  context_.offer<KPB::DownloadInterface>(KPB::DIN_Download, &library_);
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &services_);
  context_.offer<VeskPlayerX::PlayerInterface>(VeskPlayerX::DIN_Player, &player_);
  worker_ = std::make_unique<HttpDownloadThread>(&context_);
  worker_->setInterfaces(&manager_, &view_);
}

WorkerTest::~WorkerTest() {
  worker_.reset();  // also the settings
  if (run_.valid()) requireEnd(run_);
}

std::unique_ptr<DownloadItem> WorkerTest::film(const std::string& name) {
  auto item = std::make_unique<DownloadItem>();
  item->setId(7);
  item->setTitle(L"Film \u00e4");
  const std::string url = urlOf(name);
  item->setUrl(std::wstring(url.begin(), url.end()));
  return item;
}

std::unique_ptr<DownloadItem> WorkerTest::filmToPlay() {
  auto item = film();
  item->setAutoProgressivePlayback(true);
  return item;
}

std::unique_ptr<DownloadItem> WorkerTest::protectedFilm() {
  auto item = std::make_unique<DownloadItem>();
  item->setId(7);
  item->setTitle(L"Film");
  item->setTicket("ticket");
  item->setEncrypted(true);
  return item;
}

VeskDrmDownloadAuthorization WorkerTest::grant() const {
  VeskDrmDownloadAuthorization answer;
  answer.success = true;
  answer.tempUsername = "guest";
  answer.tempPassword = "secret";
  answer.url = "https://content.example/a b/movie.vesk";
  answer.ticketId = 42;
  answer.totalSize = kLength;
  answer.strdChunkBase64 = "-_8=";
  return answer;
}

VeskDrmDownloadAuthorization WorkerTest::refusal(int code) {
  VeskDrmDownloadAuthorization answer;
  answer.errorCode = code;
  answer.errorDetails = L"details";
  return answer;
}

void WorkerTest::putFile(const std::string& name, std::size_t bytes) {
  dir_.write("media/" + name, std::string(bytes, 'x'));
}

void WorkerTest::announceLength(const std::string& length) {
  server_.always(Script::answer(bareResponse("200 OK", "Content-Length: " + length + "\r\n")));
}

void WorkerTest::start(std::unique_ptr<DownloadItem> item) {
  run_ = std::async(std::launch::async,
                    [this, given = item.release()] { return worker_->downloadVideo(given); });
}

void WorkerTest::startAndFetch(std::unique_ptr<DownloadItem> item) {
  start(std::move(item));
  ASSERT_TRUE(waitFor("manager.updateStatus 7 3"));
}

void WorkerTest::startAndReport(std::unique_ptr<DownloadItem> item, unsigned long long uid) {
  startAndFetch(std::move(item));
  library_.progress(uid, 0);
  ASSERT_TRUE(waitFor("manager.updateDownloadProgress 7 0"));
  log_.clear();
}

int WorkerTest::ended() {
  requireEnd(run_);
  return run_.get();
}

int WorkerTest::run(std::unique_ptr<DownloadItem> item) {
  start(std::move(item));
  return ended();
}

std::future<void> WorkerTest::elsewhere(std::function<void()> action) {
  return std::async(std::launch::async, std::move(action));
}

bool WorkerTest::returned(std::future<void>& action) {
  requireEnd(action);
  action.get();
  return true;
}

}  // namespace support
