#include "tests/unit/plugin/ManagerFixture.h"

#include <stdexcept>

#include "KPB/DownloadInterface.h"
#include "KPX/KPXPreferences.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "persistence/DownloadManagerPersistence.h"
#include "playerx/platform/ThreadGate.h"
#include "playerx/settings/Folders.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "tests/unit/plugin/QueueText.h"

namespace {

namespace fs = std::filesystem;

QString text(const fs::path& path) { return QString::fromStdString(path.string()); }

VeskDrmDownloadAuthorization authorisation(const std::string& url) {
  VeskDrmDownloadAuthorization answer;
  answer.success = true;
  answer.url = url;
  answer.totalSize = 1000;
  return answer;
}

}  // namespace

ManagerFixture::ManagerFixture() {
  for (const char* const name : {"data", "media", "partial"}) fs::create_directory(folder_ / name);
  playerx::setApplicationDataPath(text(folder_ / "data"));
  playerx::setTempPath(text(folder_ / "partial"));
  playerx::setPreferenceOverride(KPXPreferences::MediaFolder, text(folder_ / "media"));
  context_.offer<KPB::DownloadInterface>(KPB::DIN_Download, &library_);
  context_.offer<VeskPlayerX::PlayerInterface>(VeskPlayerX::DIN_Player, &player_);
  context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &services_);
  services_.setAnswers({authorisation(kFilm)});
}

ManagerFixture::~ManagerFixture() {
  shutDown();
  playerx::ThreadGate::open();
  playerx::clearPreferenceOverrides();
  playerx::setTempPath({});
  playerx::setApplicationDataPath({});
}

void ManagerFixture::given(const std::string& queue, const Change& change) {
  const std::vector<Item*> items = queue_text::makeItems(queue);
  for (Item* const item : items) {
    item->setEncrypted(true);
    item->setTicket("ticket " + queue_text::titleOf(*item));
    item->setUrl(kvpm::StringTools::stringToWString(kFilm));
    item->setPath(mediaFile(queue_text::titleOf(*item) + ".vesk").wstring());
    if (change) change(*item);
  }
  DownloadManagerPersistence::writeDownloadQueue(queueFile().wstring(), items);
  for (Item* const item : items) delete item;
}

VeskDrmTicketData ManagerFixture::record(const std::wstring& title, std::int32_t usageId) {
  VeskDrmTicketData data;
  data.ticket = "ticket " + support::narrow(title);
  data.title = title;
  data.contentEncryptionUsageId = usageId;
  data.contentProviderDisplayName = L"Provider";
  data.version = "2.0";
  return data;
}

void ManagerFixture::start() {
  manager_.reset(new DownloadManager(&context_));
  manager_->setViewInterface(&view_);
}

void ManagerFixture::start(const std::string& queue, const Change& change) {
  given(queue, change);
  start();
}

void ManagerFixture::startAsleep() {
  playerx::ThreadGate::close();
  start();
}

void ManagerFixture::startAsleep(const std::string& queue, const Change& change) {
  given(queue, change);
  startAsleep();
}

void ManagerFixture::wakeScheduler() { playerx::ThreadGate::open(); }

void ManagerFixture::shutDown() {
  if (!manager_) return;
  manager_->Shutdown();
  manager_.reset();
}

std::string ManagerFixture::queue() {
  std::vector<Item*>* const copy = manager_->getCopyofQueue();
  const std::string text = queue_text::textOf(*copy);
  manager_->deleteCopyOfQueue(copy);
  return text;
}

int ManagerFixture::percentOf(const std::string& title) {
  std::vector<Item*>* const copy = manager_->getCopyofQueue();
  int percent = -1;
  for (const Item* const item : *copy) {
    if (queue_text::titleOf(*item) == title) percent = item->getPercentDownloaded();
  }
  manager_->deleteCopyOfQueue(copy);
  return percent;
}

ManagerFixture::Item& ManagerFixture::item(const std::string& title) {
  for (unsigned int i = 0; i < manager_->getNumberOfVideosInQueue(); ++i) {
    Item* const item = manager_->at(i);
    if (queue_text::titleOf(*item) == title) return *item;
  }
  throw std::runtime_error("no item " + title);
}

unsigned int ManagerFixture::id(const std::string& title) { return item(title).getId(); }

void ManagerFixture::await(const std::string& queue) {
  support::waitFor([&] { return this->queue() == queue; });
  EXPECT_EQ(this->queue(), queue);
}

unsigned long long ManagerFixture::transferOf(const std::string& title) {
  const auto session = library_.session(transfers_++);
  if (!session) throw std::runtime_error("no transfer of " + title);
  EXPECT_EQ(session->info.getTitle(), title);
  return session->uid;
}

ManagerFixture::Uids ManagerFixture::stoppedSessions() const {
  Uids stopped = library_.stopped();
  std::erase(stopped, 0U);
  return stopped;
}

std::string ManagerFixture::written() const {
  const auto items = DownloadManagerPersistence::readDownloadQueue(queueFile().wstring());
  const std::string text = queue_text::textOf(items);
  for (Item* const item : items) delete item;
  return text;
}

std::vector<std::string> ManagerFixture::writtenDuring(const std::function<void()>& operation) {
  std::vector<std::string> queues;
  view_.onEvent([&](const std::string&) { queues.push_back(written()); });
  operation();
  view_.onEvent({});
  return queues;
}

void ManagerFixture::forgetFile() const { fs::remove(queueFile()); }

bool ManagerFixture::isWritten() const { return fs::exists(queueFile()); }

std::vector<std::string> ManagerFixture::notices() const {
  std::vector<std::string> notices = log_.lines("view.");
  std::erase(notices, "view.keepsRunning");
  return notices;
}
