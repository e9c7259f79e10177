#include "tests/unit/app/FakeModule.h"

#include <QCoreApplication>

#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/StringTools.h"

namespace playerx {

using kvpm::StringTools;

void FakeModule::offerTo(session::PlayerSession& session) {
  offer<DownloadManagerInterface>(session.plugins(), VeskPlayerX::DIN_DownloadManager, this);
}

DownloadItem& FakeModule::put(const std::string& url, DownloadStatusEnumType status) {
  items_.push_back(std::make_unique<DownloadItem>());
  items_.back()->setUrl(StringTools::stringToWString(url));
  items_.back()->setTitle(L"film");
  items_.back()->setStatus(status);
  return *items_.back();
}

FakeModule::Item* FakeModule::add(const std::wstring& url, const std::wstring& title,
                                  const std::wstring& provider) {
  FakeManager::add(url, title, provider);
  if (!url.ends_with(L".avi")) return nullptr;
  DownloadItem& item = put(StringTools::wStringToString(url));
  if (!title.empty()) item.setTitle(title);
  return &item;
}

std::vector<FakeModule::Item*> FakeModule::addTicket(const std::wstring& ticketPath, bool) {
  FakeManager::addTicket(ticketPath, false);
  if (!takesTickets) return {};
  return {&put("http://films.test/ticket.avi")};
}

void FakeModule::setViewInterface(VeskPlayerX::DownloadManagerViewInterface* view) { view_ = view; }

void FakeModule::takeStep() {
  if (eachLook_) eachLook_();
  if (!steps_.empty()) {
    steps_.front()();
    steps_.erase(steps_.begin());
    if (view_ != nullptr) view_->downloadListChanged();
  }
}

std::vector<FakeModule::Item*>* FakeModule::getCopyofQueue() {
  takeStep();
  auto* copy = new std::vector<Item*>;
  for (const auto& item : items_) copy->push_back(new DownloadItem(item.get()));
  return copy;
}

void FakeModule::deleteCopyOfQueue(std::vector<Item*>* copy) {
  if (copy == nullptr) return;
  for (Item* item : *copy) delete item;
  delete copy;
}

std::vector<VeskPlayerX::QueuedVersion> FakeModule::getVersions() {
  takeStep();
  std::vector<VeskPlayerX::QueuedVersion> versions;
  for (const auto& item : items_) {
    versions.push_back({item->getId(), item->getStatus(), item->version()});
  }
  return versions;
}

FakeModule::Item* FakeModule::getCopy(unsigned int id) {
  copied.push_back(id);
  if (const auto step = std::exchange(nextCopy_, nullptr)) step();
  for (const auto& item : items_) {
    if (item->getId() == id) return new DownloadItem(item.get());
  }
  return nullptr;
}

bool FakeReports::findByAddress(const std::string&, TransferReport* report) const {
  if (isThere) *report = last;
  return isThere;
}

bool FakeReports::findByPath(const std::string& path, TransferReport* report) const {
  return findByAddress(path, report);
}

void needApplication() {
  static int count = 1;
  static char name[] = "test";
  static char* arguments[] = {name, nullptr};
  static QCoreApplication application(count, arguments);
  QCoreApplication::setOrganizationName("Vesk");
  QCoreApplication::setApplicationName("VeskPlayerX");
}

}  // namespace playerx
