#include "playerx/transfers/BootId.h"

#include "playerx/transfers/SmallFile.h"

namespace playerx::transfers {
namespace {

constexpr char kBootFile[] = "/proc/sys/kernel/random/boot_id";

}  // namespace

const std::string& bootId() {
  static const std::string id = [] {
    const std::string line = readSmallFile(kBootFile);
    return line.substr(0, line.find('\n'));
  }();
  return id;
}

}  // namespace playerx::transfers
