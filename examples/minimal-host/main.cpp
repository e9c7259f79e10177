// A whole host of the download manager: downloads what it is given, says what happens, exits with 0
// when every film is there. Needs the headers of the development package and the libraries behind
// them, nothing else of the player.

#include <dlfcn.h>

#include <QCoreApplication>
#include <condition_variable>
#include <iostream>
#include <list>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "KPB/DownloadInterface.h"
#include "KPIM/Helper.h"
#include "KPIM/PluginInfo.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "kvpm/StringTools.h"

namespace {

using VeskPlayerX::DownloadItemInterface;
using VeskPlayerX::DownloadManagerInterface;

std::string utf8(const std::wstring& text) { return kvpm::StringTools::wStringToString(text); }

/// The plug-ins of this host. Each is loaded when it is first wanted, and stays until the end.
class Plugins : public KPIM::Context {
 public:
  Plugins(const Plugins&) = delete;
  Plugins() = default;
  ~Plugins() override { shutdown(); }

  void add(KPIM::PluginInfo info, std::string library) {
    entries_.push_back({std::move(info), std::move(library)});
  }

  KPIM::VESK_RESULT getPluginInstance(const PluginFilter& filter,
                                      const PluginInfoSelector& selector, bool mayLoad,
                                      KPIM::Plugin** out) override {
    // Re-entrant: a plug-in may ask for others while it is made.
    const std::lock_guard lock(mutex_);
    Entry* best = find(filter, selector, true);
    if (best == nullptr && mayLoad) best = find(filter, selector, false);
    if (best == nullptr) return KPIM::kNoSuchPlugin;
    if (best->plugin == nullptr && !load(*best)) return KPIM::kLoadFailed;
    best->plugin->kpimRetain();
    *out = best->plugin;
    return KPIM::kSuccess;
  }

  /// Ends the work of all plug-ins, then gives up the references of this context. The libraries
  /// stay mapped: code of theirs may still be on some thread's stack.
  void shutdown() {
    for (Entry& entry : entries_) {
      void* face = nullptr;
      if (entry.plugin != nullptr &&
          entry.plugin->kpimGetInterface(VeskPlayerX::DIN_Shutdown, &face) == KPIM::kSuccess) {
        static_cast<VeskPlayerX::ShutdownInterface*>(face)->Shutdown();
      }
    }
    for (Entry& entry : entries_) {
      if (auto* const plugin = std::exchange(entry.plugin, nullptr)) plugin->kpimRelease();
    }
  }

 private:
  struct Entry {
    KPIM::PluginInfo info;
    std::string library;
    KPIM::Plugin* plugin = nullptr;  // with the reference of its creation
  };

  Entry* find(const PluginFilter& filter, const PluginInfoSelector& selector, bool isLoaded) {
    Entry* best = nullptr;
    for (Entry& entry : entries_) {
      if ((entry.plugin != nullptr) != isLoaded || !filter.accepts(entry.info)) continue;
      if (best == nullptr || selector.less(best->info, entry.info)) best = &entry;
    }
    return best;
  }

  bool load(Entry& entry) {
    void* const library = ::dlopen(entry.library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      std::cerr << ::dlerror() << '\n';
      return false;
    }
    auto* const getPlugin =
        reinterpret_cast<KPIM::GetPluginFunction*>(::dlsym(library, "getPlugin"));
    void* made = nullptr;
    if (getPlugin == nullptr || getPlugin(this, &made) != KPIM::kSuccess) return false;
    entry.plugin = static_cast<KPIM::Plugin*>(made);
    return true;
  }

  std::recursive_mutex mutex_;
  std::list<Entry> entries_;
};

/// Tells the main thread that there is something to look at, and the user why a film failed.
class View : public VeskPlayerX::DownloadManagerViewInterface {
 public:
  /// Waits for a change that no earlier call has returned for.
  void waitForChange() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return hasChanged_; });
    hasChanged_ = false;
  }

  void downloadListChanged() override { wake(); }
  void downloadItemChanged(unsigned int) override { wake(); }
  void downloadItemsAdded() override {}
  bool keepsRunningWhenFinished() override { return true; }
  int chooseSlot(const std::wstring&, const VeskDrmDownloadAuthorization&) override { return -1; }
  void showAuthorizationError(const VeskDrmDownloadAuthorization& answer) override {
    std::cerr << "not authorised: " + utf8(answer.errorDetails) + '\n';
  }
  void notEnoughSpace(const std::wstring& path) override {
    std::cerr << "no space at " + utf8(path) + '\n';
  }
  void downloadUrlFailed(const std::wstring& url) override {
    std::cerr << "cannot start " + utf8(url) + '\n';
  }
  void downloadBroken(const std::wstring& path) override {
    std::cerr << "broken: " + utf8(path) + '\n';
  }
  void refreshItem(unsigned int) override { wake(); }

 private:
  void wake() {
    {
      const std::lock_guard lock(mutex_);
      hasChanged_ = true;
    }
    changed_.notify_one();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  bool hasChanged_ = false;
};

/// Whether all items are complete or failed. Items of the queue itself belong to other threads too;
/// a copy does not.
bool isFinished(DownloadManagerInterface& downloads, bool& succeeded) {
  std::vector<DownloadItemInterface*>* const copy = downloads.getCopyofQueue();
  bool finished = true;
  succeeded = true;
  for (const DownloadItemInterface* item : *copy) {
    std::cout << utf8(item->getTitle()) << ": " << item->getPercentDownloaded() << " %, status "
              << item->getStatus() << ", " << utf8(item->getPath()) << std::endl;
    succeeded = succeeded && item->getStatus() == DownloadStatusCompleted;
    finished = finished && (item->getStatus() == DownloadStatusCompleted ||
                            item->getStatus() == DownloadStatusFailed);
  }
  downloads.deleteCopyOfQueue(copy);
  return finished;
}

}  // namespace

int main(int count, char** arguments) {
  QCoreApplication application(count, arguments);
  QCoreApplication::setOrganizationName("Vesk");  // the data folder and the preferences
  QCoreApplication::setApplicationName("MinimalHost");

  View view;  // outlives the manager
  Plugins plugins;
  plugins.add({"host.module", "1.0", {VeskPlayerX::DIN_DownloadManager, VeskPlayerX::DIN_Shutdown}},
              MODULE);
  plugins.add({"host.downloads", "1.0", {KPB::DIN_Download}}, DOWNLOAD_LIBRARY);
  const auto manager =
      KPIM::load<DownloadManagerInterface>(&plugins, VeskPlayerX::DIN_DownloadManager);
  if (manager == nullptr) return 2;
  DownloadManagerInterface& downloads = *manager->get();
  downloads.setViewInterface(&view);
  for (const QString& url : QCoreApplication::arguments().mid(1)) {
    if (downloads.add(url.toStdWString(), L"", L"") == nullptr) {
      std::cerr << "not a film: " << url.toStdString() << '\n';
    }
  }
  bool succeeded = false;
  while (!isFinished(downloads, succeeded)) view.waitForChange();
  downloads.setViewInterface(nullptr);
  plugins.shutdown();
  return succeeded ? 0 : 1;
}
