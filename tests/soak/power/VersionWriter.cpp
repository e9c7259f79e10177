// Saves version after version of a file until it is killed, at the changing pace of a player, and
// prints the number of each and the time at which it was in place.
//
// VersionWriter FILE

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "tests/soak/power/DiskRecord.h"
#include "tests/soak/power/Versions.h"

namespace {

/// Puts `content` in the place of `before`, and says what differs where both are as long.
bool save(const std::wstring& path, const std::string& before, const std::string& content) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenWrite) != 0) return false;
  if (before.size() == content.size()) {
    const auto begin = std::mismatch(content.begin(), content.end(), before.begin()).first;
    const auto end = std::mismatch(content.rbegin(), content.rend(), before.rbegin()).first.base();
    file.expectChange(static_cast<std::uint64_t>(begin - content.begin()),
                      static_cast<std::uint64_t>(end - content.begin()));
  }
  file.write(content.data(), content.size());
  return file.close() == 0;
}

std::chrono::milliseconds nextPause(std::mt19937& random) {
  const bool isLong = std::bernoulli_distribution(0.02)(random);
  return std::chrono::milliseconds(std::uniform_int_distribution<>(0, isLong ? 900 : 15)(random));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  const std::wstring path = kvpm::StringTools::stringToWString(arguments[1]);
  std::mt19937 random(20240501);
  std::string content;
  for (unsigned long number = 1;; ++number) {
    const std::string before = std::exchange(content, power_test::contentOfVersion(number));
    if (!save(path, before, content)) return 1;
    std::cout << number << ' ' << power_test::now() << std::endl;
    std::this_thread::sleep_for(nextPause(random));
  }
}
