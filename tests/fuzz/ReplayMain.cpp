// Feeds every file of a corpus to the target: what builds without libFuzzer do instead of fuzzing.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "tests/fuzz/Fuzz.h"

/// A target may define it, as libFuzzer allows.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

constexpr std::size_t kFewestSeeds = 50;

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& corpus) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(corpus)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

/// The input lies in an array of exactly its size, so that a sanitizer sees a step past its end.
void replay(const std::filesystem::path& file) {
  std::printf("%s\n", file.filename().c_str());
  std::fflush(stdout);
  std::ifstream stream(file, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(stream), {}};
  const std::unique_ptr<std::uint8_t[]> input(new std::uint8_t[content.size()]);
  std::copy(content.begin(), content.end(), input.get());
  LLVMFuzzerTestOneInput(input.get(), content.size());
}

int replayAll(const std::filesystem::path& corpus) {
  const std::vector<std::filesystem::path> files = filesOf(corpus);
  std::for_each(files.begin(), files.end(), replay);
  if (files.size() >= kFewestSeeds) return 0;
  std::fprintf(stderr, "%s holds %zu seeds, fewer than %zu\n", corpus.c_str(), files.size(),
               kFewestSeeds);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s CORPUS\n", argv[0]);
    return 2;
  }
  try {
    return replayAll(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
