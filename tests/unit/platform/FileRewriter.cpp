// Rewrites a file, version after version, and says on standard output, a byte for each, when one is
// in place. Without a last version it goes on until the test kills it.
//
// FileRewriter FILE FIRST_VERSION [LAST_VERSION [again|block]]
//
// With `again` the destructor of a static object writes version 0 as the last one of all. With
// `block` only the second of three blocks of 4096 bytes has the version, in every line.

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"

namespace {

// Every line carries the version, the last one says how many there are.
std::string line(unsigned long version) { return std::to_string(version) + "\n"; }

bool rewrite(const std::wstring& path, unsigned long version) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenWrite) != 0) return false;
  const unsigned long lines = 1 + version * 37 % 3000;
  std::string content;
  for (unsigned long number = 0; number < lines; ++number) {
    content += line(version);
    if (number % 500 != 0) continue;
    file.write(content.data(), content.size());
    content.clear();
  }
  content += "lines " + line(lines);
  file.write(content.data(), content.size());
  return file.close() == 0;
}

// What stands before and behind the block stays as it is.
bool rewriteBlock(const std::wstring& path, unsigned long version, bool isFirst) {
  constexpr std::size_t kBlock = 4096, kLine = 16;
  std::string line = std::to_string(version);
  line.resize(kLine - 1, ' ');
  line += '\n';
  std::string content(kBlock, 'x');
  for (std::size_t i = 0; i < kBlock / kLine; ++i) content += line;
  content.append(kBlock, 'y');
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenWrite) != 0) return false;
  if (!isFirst) file.expectChange(kBlock, 2 * kBlock);
  file.write(content.data(), content.size());
  return file.close() == 0;
}

// Constructed before anything that the platform cleans up at the end, so destroyed after it.
struct LastVersion {
  std::wstring path{};  // empty for no such version
  ~LastVersion() {
    if (!path.empty()) rewrite(path, 0);
  }
} lastVersion;

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  const std::wstring path = kvpm::StringTools::stringToWString(arguments[1]);
  const unsigned long last = count > 3 ? std::strtoul(arguments[3], nullptr, 10) : ULONG_MAX;
  const std::string kind = count > 4 ? arguments[4] : "";
  if (kind == "again") lastVersion.path = path;
  const unsigned long first = std::strtoul(arguments[2], nullptr, 10);
  for (unsigned long version = first; version <= last; ++version) {
    const bool isDone =
        kind == "block" ? rewriteBlock(path, version, version == first) : rewrite(path, version);
    if (!isDone || ::write(STDOUT_FILENO, ".", 1) != 1) return 1;
  }
  return 0;
}
