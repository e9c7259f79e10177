#include "tests/soak/power/DiskRecord.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace power_test {
DiskRecord::DiskRecord(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  Entry entry;
  while (stream.read(reinterpret_cast<char*>(&entry.head), sizeof entry.head)) {
    entry.bytes.resize(entry.head.length);
    stream.read(entry.bytes.data(), static_cast<std::streamsize>(entry.bytes.size()));
    if (!stream) throw std::runtime_error("the record of the disk is cut short");
    entries_.push_back(entry);
  }
}

void DiskRecord::cutAfter(std::size_t entry, std::string& disk, std::mt19937& random) const {
  const auto end = entries_.begin() + static_cast<std::ptrdiff_t>(entry) + 1;
  const auto lastFlush =
      std::find_if(std::make_reverse_iterator(end), entries_.rend(), [](const Entry& one) {
        return one.head.length == 0;
      }).base();
  // From none of them to all of them: each has its turn.
  std::bernoulli_distribution isThere(std::uniform_int_distribution<>(0, 10)(random) / 10.0);
  for (auto one = entries_.begin(); one != end; ++one) {
    for (std::uint64_t at = 0; at < one->head.length; at += kBlock) {
      const std::uint64_t length = std::min(kBlock, one->head.length - at);
      if (one >= lastFlush && !isThere(random)) continue;
      disk.replace(one->head.position + at, length, one->bytes, at, length);
    }
  }
}

}  // namespace power_test
