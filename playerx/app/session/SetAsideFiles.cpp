#include "playerx/app/session/SetAsideFiles.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

namespace playerx {

SetAsideFiles::SetAsideFiles(std::string folder) : folder_(std::move(folder)), before_(present()) {}

std::vector<std::string> SetAsideFiles::setAside() const {
  const std::set<std::string> now = present();
  std::vector<std::string> added;
  std::set_difference(now.begin(), now.end(), before_.begin(), before_.end(),
                      std::back_inserter(added));
  return added;
}

std::set<std::string> SetAsideFiles::present() const {
  std::set<std::string> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
    if (entry.path().filename().string().find(".unreadable") != std::string::npos) {
      files.insert(entry.path());
    }
  }
  return files;
}

}  // namespace playerx
