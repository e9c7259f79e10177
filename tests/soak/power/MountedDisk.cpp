#include "tests/soak/power/MountedDisk.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace power_test {
namespace {

namespace fs = std::filesystem;
using support::UniqueFd;

constexpr std::uintmax_t kDiskSize = std::uintmax_t{24} << 20U;

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

UniqueFd openOrFail(const fs::path& path) {
  UniqueFd file(::open(path.c_str(), O_RDWR | O_CLOEXEC));
  if (file.get() < 0) fail(path);
  return file;
}

// Frees itself once nothing is mounted from it any more.
fs::path attachLoopDevice(const UniqueFd& disk, UniqueFd& device) {
  const UniqueFd control = openOrFail("/dev/loop-control");
  while (true) {
    const int number = ::ioctl(control.get(), LOOP_CTL_GET_FREE);
    if (number < 0) fail("no free loop device");
    const fs::path name = "/dev/loop" + std::to_string(number);
    device = openOrFail(name);
    loop_config config{};
    config.fd = static_cast<unsigned>(disk.get());
    config.info.lo_flags = LO_FLAGS_AUTOCLEAR;
    if (::ioctl(device.get(), LOOP_CONFIGURE, &config) == 0) return name;
    if (errno != EBUSY) fail(name);  // another process was faster
  }
}

}  // namespace

std::string obstacleToMounting() {
  static const std::string obstacle = []() -> std::string {
    for (const char* device : {"/dev/fuse", "/dev/loop-control"}) {
      const UniqueFd file(::open(device, O_RDWR | O_CLOEXEC));
      if (file.get() < 0) return std::string(device) + " cannot be opened";
    }
    if (::unshare(CLONE_NEWNS) != 0) return "mounting is not permitted";
    const bool isPrivate = ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return isPrivate ? "" : "mounting is not permitted";
  }();
  return obstacle;
}

std::string emptyDisk() {
  const support::TempDir folder;
  const fs::path disk = folder.write("disk", "");
  fs::resize_file(disk, kDiskSize);
  support::Process formatter(
      {"/sbin/mkfs.ext4", "-q", "-F", "-b", "4096", "-J", "size=4", disk.string()});
  if (formatter.wait() != 0) throw std::runtime_error("mkfs.ext4: " + formatter.errors());
  return support::readFile(disk);
}

MountedDisk::MountedDisk(const UniqueFd& disk, fs::path folder) : folder_(std::move(folder)) {
  UniqueFd device;
  const fs::path name = attachLoopDevice(disk, device);
  fs::create_directories(folder_);
  if (::mount(name.c_str(), folder_.c_str(), "ext4", MS_NOATIME, nullptr) != 0) fail(folder_);
}

MountedDisk::~MountedDisk() { ::umount2(folder_.c_str(), MNT_DETACH); }

RecordedDisk::RecordedDisk(const std::string& content, const fs::path& folder) {
  const fs::path image = own_.write("image", content);
  const fs::path served = own_ / "served";
  fs::create_directories(served);
  server_ = std::make_unique<support::Process>(
      std::vector<std::string>{RECORDING_DISK, served.string(), image.string(), record().string()});
  const bool isServed = support::waitFor([&] { return fs::exists(served / "disk"); });
  if (!isServed) throw std::runtime_error("no recording disk: " + server_->errors());
  disk_ = std::make_unique<MountedDisk>(openOrFail(served / "disk"), folder);
}

RecordedDisk::~RecordedDisk() { unmount(); }

void RecordedDisk::unmount() {
  disk_.reset();
  ::umount2((own_ / "served").c_str(), MNT_DETACH);
}

}  // namespace power_test
