// Saves version after version of a file until it is killed, at the changing pace of a player, and
// prints the number of each and the time at which it was in place.
//
// VersionWriter FILE

#include <chrono>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "tests/soak/power/DiskRecord.h"
#include "tests/soak/power/Versions.h"

namespace {

bool save(const std::wstring& path, const std::string& content) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenWrite) != 0) return false;
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
  for (unsigned long number = 1;; ++number) {
    if (!save(path, power_test::contentOfVersion(number))) return 1;
    std::cout << number << ' ' << power_test::now() << std::endl;
    std::this_thread::sleep_for(nextPause(random));
  }
}
