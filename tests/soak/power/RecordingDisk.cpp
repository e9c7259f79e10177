// A file system of one file, "disk", to be mounted through a loop device: every write to it and
// every flush is recorded in the order of their arrival.
//
// RecordingDisk FOLDER IMAGE RECORD: serves IMAGE, which is changed, as FOLDER/disk. Ends when the
// folder is unmounted.

#define FUSE_USE_VERSION 31
#include <fcntl.h>
#include <fuse3/fuse.h>
#include <sched.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "tests/soak/power/DiskRecord.h"

namespace {

constexpr std::string_view kName = "/disk";

int image = -1;
int record = -1;

int append(const void* bytes, std::size_t length) {
  return ::write(record, bytes, length) == static_cast<ssize_t>(length) ? 0 : -EIO;
}

int note(power_test::RecordHead head, const char* bytes) {
  head.time = power_test::now();
  if (const int error = append(&head, sizeof head); error != 0) return error;
  return append(bytes, head.length);
}

int getAttributes(const char* path, struct stat* status, fuse_file_info*) {
  if (path == std::string_view("/")) {
    status->st_mode = S_IFDIR | 0700;
    status->st_nlink = 2;
    return 0;
  }
  if (path != kName) return -ENOENT;
  return ::fstat(image, status) == 0 ? 0 : -errno;
}

int openDisk(const char* path, fuse_file_info*) { return path == kName ? 0 : -ENOENT; }

int readDisk(const char*, char* buffer, std::size_t length, off_t position, fuse_file_info*) {
  const ssize_t got = ::pread(image, buffer, length, position);
  return got < 0 ? -errno : static_cast<int>(got);
}

int writeDisk(const char*, const char* bytes, std::size_t length, off_t position, fuse_file_info*) {
  const ssize_t put = ::pwrite(image, bytes, length, position);
  if (put < 0) return -errno;
  const auto taken = static_cast<std::uint64_t>(put);
  if (const int error = note({0, static_cast<std::uint64_t>(position), taken}, bytes); error != 0) {
    return error;
  }
  return static_cast<int>(put);
}

int flushDisk(const char*, int, fuse_file_info*) { return note({}, nullptr); }

/// A disk does not wait for a processor of the machine it belongs to. Where the system does not
/// permit that, this one does.
void goBeforeOtherProcesses() {
  sched_param first{};
  first.sched_priority = ::sched_get_priority_min(SCHED_RR);
  ::sched_setscheduler(0, SCHED_RR, &first);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  image = ::open(arguments[2], O_RDWR | O_CLOEXEC);
  record = ::open(arguments[3], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (image < 0 || record < 0) return 1;
  goBeforeOtherProcesses();
  fuse_operations operations{};
  operations.getattr = getAttributes;
  operations.open = openDisk;
  operations.read = readDisk;
  operations.write = writeDisk;
  operations.fsync = flushDisk;
  char foreground[] = "-f";
  char oneThread[] = "-s";
  char* options[] = {arguments[0], foreground, oneThread, arguments[1], nullptr};
  return fuse_main(4, options, &operations, nullptr);
}
