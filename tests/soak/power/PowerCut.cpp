#include "tests/soak/power/PowerCut.h"

#include <sys/mman.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <iostream>
#include <stdexcept>

#include "tests/soak/Count.h"
#include "tests/soak/power/MountedDisk.h"

namespace power_test {

int cutsToTry() { return soak::countOr(30); }

bool mayMount() {
  const std::string obstacle = obstacleToMounting();
  if (obstacle.empty()) return true;
  std::cout << "No disk was mounted here (" << obstacle
            << "): what is known comes from the test of file operations." << std::endl;
  return false;
}

bool mayKeepAttributes(const std::filesystem::path& folder) {
  if (::setxattr(folder.c_str(), "user.vesk.test", "1", 1, 0) == 0) return true;
  std::cout << "The folder for temporary files keeps no extended attributes: nothing was tried."
            << std::endl;
  return false;
}

std::map<std::string, std::string> recordingIn(const std::filesystem::path& record,
                                               const std::filesystem::path& folder) {
  return {{"LD_PRELOAD", FILE_RECORDER},
          {"VESK_FILE_RECORD", record},
          {"VESK_RECORDED_FOLDER", folder},
          // The recorder's wrappers lie around those of the sanitizer.
          {"ASAN_OPTIONS", "verify_asan_link_order=0"}};
}

std::size_t anyEntry(std::size_t size, std::mt19937& random) {
  if (size < 2) throw std::runtime_error("nothing was recorded");
  return std::uniform_int_distribution<std::size_t>(0, size - 2)(random);
}

support::UniqueFd diskOf(const std::string& content) {
  support::UniqueFd disk(::memfd_create("disk", MFD_CLOEXEC));
  if (::write(disk.get(), content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
    throw std::runtime_error("no memory for a disk");
  }
  return disk;
}

}  // namespace power_test
