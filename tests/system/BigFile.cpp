#include "tests/system/BigFile.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace system_test {

namespace {

constexpr std::size_t kPiece = 1 << 20;

/// A number that no other place has (an invertible mix of the place).
std::uint64_t markOf(std::uint64_t place, std::uint64_t seed) {
  return (place + seed * 0x9E3779B97F4A7C15u) * 0xBF58476D1CE4E5B9u;
}

void fill(std::string& piece, std::uint64_t start, std::uint64_t seed) {
  for (std::size_t i = 0; i < piece.size(); i += 8) {
    const std::uint64_t mark = markOf(start + i, seed);
    std::memcpy(piece.data() + i, &mark, std::min<std::size_t>(8, piece.size() - i));
  }
}

}  // namespace

std::string distinctBytes(std::size_t size, std::uint64_t seed) {
  std::string bytes(size, '\0');
  fill(bytes, 0, seed);
  return bytes;
}

void writeDistinctFile(const std::filesystem::path& path, std::uint64_t size, std::uint64_t seed) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  std::string piece;
  for (std::uint64_t start = 0; start < size; start += kPiece) {
    piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, size - start)));
    fill(piece, start, seed);
    file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
  }
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

bool sameContent(const std::filesystem::path& left, const std::filesystem::path& right) {
  std::ifstream one(left, std::ios::binary), other(right, std::ios::binary);
  if (!one || !other) return false;
  std::string a(kPiece, '\0'), b(kPiece, '\0');
  for (;;) {
    one.read(a.data(), kPiece);
    other.read(b.data(), kPiece);
    if (one.gcount() != other.gcount()) return false;
    if (std::memcmp(a.data(), b.data(), static_cast<std::size_t>(one.gcount())) != 0) return false;
    if (one.gcount() == 0) return true;
  }
}

}  // namespace system_test
