#include "tests/support/TempDir.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace support {

TempDir::TempDir() {
  std::string name = (std::filesystem::temp_directory_path() / "vesk-test-").string();
  name.append(6, 'X');
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a temporary folder");
  path_ = name;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempDir::write(std::string_view name, std::string_view content) const {
  const std::filesystem::path target = path_ / name;
  std::filesystem::create_directories(target.parent_path());
  writeFile(target, content);
  return target;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeFile(const std::filesystem::path& path, std::string_view content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

std::vector<std::string> hiddenFilesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename();
    if (name.starts_with(".")) names.push_back(name);
  }
  return names;
}

}  // namespace support
