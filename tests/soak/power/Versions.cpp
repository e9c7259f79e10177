#include "tests/soak/power/Versions.h"

#include <cstdlib>

namespace power_test {
namespace {

constexpr char kBegin[] = "version ";

}  // namespace

std::string contentOfVersion(unsigned long number) {
  const unsigned long items = 500 + number / 16 % 7 * 311;
  std::string content = kBegin + std::to_string(number) + "\n";
  const unsigned long itemsChanged = number - number % 4;  // the version that changed an item
  for (unsigned long item = 0; item < items; ++item) {
    // The number of the last version that changed this item.
    const unsigned long changed = itemsChanged - (itemsChanged + items - item) % items;
    content += "item " + std::to_string(1'000'000 + changed % 1'000'000) + " of the queue\n";
  }
  return content;
}

unsigned long versionOfContent(const std::string& content) {
  if (!content.starts_with(kBegin)) return 0;
  const unsigned long number = std::strtoul(content.c_str() + sizeof kBegin - 1, nullptr, 10);
  return number > 0 && content == contentOfVersion(number) ? number : 0;
}

}  // namespace power_test
