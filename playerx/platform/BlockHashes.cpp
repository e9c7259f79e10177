#include "playerx/platform/BlockHashes.h"

// With the processor's own vector instructions the hashes take a third of the time.
#define XXH_STATIC_LINKING_ONLY  // has the state's size known
#if defined(__x86_64__)
#include <xxh_x86dispatch.h>
#else
#include <xxhash.h>
#endif

#include <algorithm>
#include <random>
#include <utility>

#include "playerx/platform/FileIo.h"

namespace playerx {
namespace {

std::uint64_t hashOfBlock(const char* bytes, std::uint64_t seed) {
  return XXH3_64bits_withSeed(bytes, BlockHashes::kBlock, seed);
}

}  // namespace

struct BlockHashes::PartialBlock {
  XXH3_state_t state;
};

BlockHashes::BlockHashes(std::uint64_t seed)
    : seed_(seed), partial_(std::make_unique<PartialBlock>()) {}

BlockHashes::BlockHashes(BlockHashes&&) noexcept = default;
BlockHashes& BlockHashes::operator=(BlockHashes&&) noexcept = default;
BlockHashes::~BlockHashes() = default;

std::uint64_t BlockHashes::processSeed() {
  static const std::uint64_t seed = [] {
    std::random_device random;
    return std::uint64_t{random()} << 32U | random();
  }();
  return seed;
}

void BlockHashes::replaceBlock(std::size_t index, const char* bytes) {
  blocks_[index] = hashOfBlock(bytes, seed_);
}

BlockHashes BlockHashes::fullBlocks() const {
  BlockHashes copy(seed_);
  copy.blocks_ = blocks_;
  return copy;
}

void BlockHashes::add(const char* bytes, std::size_t length) {
  while (length > 0) {
    const std::size_t taken = std::min(length, kBlock - filled_);
    if (taken == kBlock) {
      blocks_.push_back(hashOfBlock(bytes, seed_));
    } else {
      addToPartial(bytes, taken);
    }
    bytes += taken;
    length -= taken;
  }
}

void BlockHashes::addToPartial(const char* bytes, std::size_t length) {
  if (filled_ == 0) XXH3_64bits_reset_withSeed(&partial_->state, seed_);
  XXH3_64bits_update(&partial_->state, bytes, length);
  filled_ += length;
  if (filled_ < kBlock) return;
  blocks_.push_back(XXH3_64bits_digest(&partial_->state));
  filled_ = 0;
}

bool BlockHashes::hasSomeOf(const char* bytes, std::size_t length) const {
  constexpr std::size_t kParts = 8;
  for (std::size_t part = 0; part < kParts; ++part) {
    const std::size_t index = length / kBlock * part / kParts;
    const bool isThere = index < count() && (index + 1) * kBlock <= length &&
                         blocks_[index] == hashOfBlock(bytes + index * kBlock, seed_);
    if (isThere) return true;
  }
  return false;
}

std::uint64_t BlockHashes::whole() const {
  const std::uint64_t end[] = {filled_, filled_ == 0 ? 0 : XXH3_64bits_digest(&partial_->state)};
  const std::uint64_t begin =
      XXH3_64bits_withSeed(blocks_.data(), blocks_.size() * sizeof(blocks_[0]), seed_);
  return XXH3_64bits_withSeed(end, sizeof end, begin);
}

std::optional<std::uint64_t> hashOfFile(int file, std::uint64_t seed, int& error) {
  BlockHashes hashes(seed);
  std::vector<char> buffer(std::size_t{1} << 18U);
  for (std::int64_t position = 0;;) {
    const IoResult got = readFullyAt(file, buffer.data(), buffer.size(), position);
    error = got.error;
    if (error != 0) return std::nullopt;
    if (got.bytes == 0) return hashes.whole();
    hashes.add(buffer.data(), got.bytes);
    position += static_cast<std::int64_t>(got.bytes);
  }
}

}  // namespace playerx
