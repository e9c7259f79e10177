// A whole host of the download manager: downloads what it is given and what its queue still holds,
// says what happens, exits with 0 when all films of this run are there. Needs the headers of the
// development package and the libraries behind them, nothing else of the player.

#include <dlfcn.h>

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <iostream>
#include <list>
#include <mutex>
#include <optional>
#include <set>
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
void say(const std::wstring& text) { std::cerr << utf8(text) + '\n'; }

/// The plug-ins of this host. Each is loaded when it is first wanted, and stays until the end.
class Plugins : public KPIM::Context {
 public:
  ~Plugins() override { shutdown(); }

  void add(KPIM::PluginInfo info, std::string library) {
    entries_.push_back({std::move(info), std::move(library)});
  }

  KPIM::VESK_RESULT getPluginInstance(const PluginFilter& filter,
                                      const PluginInfoSelector& selector, bool mayLoad,
                                      KPIM::Plugin** out) override {
    // Re-entrant: a plug-in may ask for others while it is made.
    const std::lock_guard lock(mutex_);
    Entry* const best = find(filter, selector, mayLoad);
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

  Entry* find(const PluginFilter& filter, const PluginInfoSelector& selector, bool mayLoad) {
    Entry* best = nullptr;
    for (Entry& entry : entries_) {
      if ((entry.plugin == nullptr && !mayLoad) || !filter.accepts(entry.info)) continue;
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
    changes_.wait(seen_);
    seen_ = changes_;
  }

  void downloadListChanged() override { wake(); }
  void downloadItemChanged(unsigned int) override { wake(); }
  void downloadItemsAdded() override {}
  bool keepsRunningWhenFinished() override { return true; }
  int chooseSlot(const std::wstring&, const VeskDrmDownloadAuthorization&) override { return -1; }
  void showAuthorizationError(const VeskDrmDownloadAuthorization& answer) override {
    say(L"not authorised: " + answer.errorDetails);
  }
  void notEnoughSpace(const std::wstring& path) override { say(L"no space at " + path); }
  void downloadUrlFailed(const std::wstring& url) override { say(L"cannot start " + url); }
  void downloadBroken(const std::wstring& path) override { say(L"broken: " + path); }
  void refreshItem(unsigned int) override { wake(); }

 private:
  void wake() {
    ++changes_;
    changes_.notify_one();
  }

  std::atomic<unsigned int> changes_ = 0;
  unsigned int seen_ = 0;  // of them, by the main thread
};

bool hasEnded(const DownloadItemInterface& item) {
  return item.getStatus() == DownloadStatusCompleted || item.getStatus() == DownloadStatusFailed;
}

/// Items of the queue itself belong to other threads too; a copy does not.
template <class Use>
void forEachCopy(DownloadManagerInterface& downloads, Use use) {
  std::vector<DownloadItemInterface*>* const copy = downloads.getCopyofQueue();
  for (const DownloadItemInterface* item : *copy) use(*item);
  downloads.deleteCopyOfQueue(copy);
}

/// Prints what was not printed yet. Returns whether all films are there once all have ended.
std::optional<bool> print(DownloadManagerInterface& downloads, std::set<std::string>& printed) {
  constexpr const char* kWords[] = {"paused",  "queued", "starting", "downloading", "completed",
                                    "stopped", "failed", "held",     "unknown"};
  bool allEnded = true;
  bool succeeded = true;
  forEachCopy(downloads, [&](const DownloadItemInterface& item) {
    const std::string line =
        utf8(item.getTitle()) + ": " + kWords[std::min<std::size_t>(item.getStatus(), 8)] + ", " +
        std::to_string(item.getPercentDownloaded()) + " %, " + utf8(item.getPath());
    if (printed.insert(line).second) std::cout << line << std::endl;
    allEnded = allEnded && hasEnded(item);
    succeeded = succeeded && item.getStatus() == DownloadStatusCompleted;
  });
  return allEnded ? std::optional(succeeded) : std::nullopt;
}

}  // namespace

int main(int count, char** arguments) {
  QCoreApplication application(count, arguments);
  QCoreApplication::setOrganizationName("Vesk");  // the data folder and the preferences
  QCoreApplication::setApplicationName(HOST_NAME);

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
  // What ended in an earlier run is that run's affair.
  forEachCopy(downloads, [&downloads](const DownloadItemInterface& item) {
    if (hasEnded(item)) downloads.remove(item.getId());
  });
  for (const QString& argument : QCoreApplication::arguments().mid(1)) {
    const std::wstring url = argument.toStdWString();
    if (downloads.add(url, L"", L"") == nullptr) say(L"not a film: " + url);
  }
  std::set<std::string> printed;
  std::optional<bool> succeeded;
  while (!(succeeded = print(downloads, printed))) view.waitForChange();
  downloads.setViewInterface(nullptr);
  plugins.shutdown();
  return *succeeded ? 0 : 1;
}
