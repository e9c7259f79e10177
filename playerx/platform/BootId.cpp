#include "playerx/platform/BootId.h"

#include <cstdlib>
#include <fstream>

namespace playerx {
namespace {

std::string readBootId() {
  if (const char* given = std::getenv("VESK_BOOT_ID"); given != nullptr) return given;
  std::string id;
  std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), id);
  return id;
}

}  // namespace

const std::string& bootId() {
  static const std::string id = readBootId();
  return id;
}

}  // namespace playerx
