#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace playerx {

/// The hashes of the blocks of some content, and one hash of the whole from them. Equal hashes mean
/// equal blocks: the seed differs in each process, so colliding blocks cannot be prepared.
class BlockHashes {
 public:
  static constexpr std::size_t kBlock = 4096;

  explicit BlockHashes(std::uint64_t seed = processSeed());
  BlockHashes(BlockHashes&&) noexcept;
  BlockHashes& operator=(BlockHashes&&) noexcept;
  ~BlockHashes();

  static std::uint64_t processSeed();
  std::uint64_t seed() const { return seed_; }

  /// Makes room for so many bytes, so that adding them cannot fail.
  void reserve(std::size_t length) { blocks_.reserve(blocks_.size() + length / kBlock + 1); }

  /// Appends any number of bytes.
  void add(const char* bytes, std::size_t length);

  /// Appends the block that has the next place in `other`, which has that many.
  void addBlockOf(const BlockHashes& other) { blocks_.push_back(other.blocks_[blocks_.size()]); }

  /// Puts another block in the place of a full one.
  void replaceBlock(std::size_t index, const char* bytes);

  /// The same full blocks.
  BlockHashes fullBlocks() const;

  /// Bytes in the block that is not full yet; 0 at the beginning of a block.
  std::size_t filled() const { return filled_; }

  /// The number of full blocks.
  std::size_t count() const { return blocks_.size(); }
  bool hasSameBlock(std::size_t index, const BlockHashes& other) const {
    return index < other.count() && blocks_[index] == other.blocks_[index];
  }

  /// Whether one of a few full blocks, spread over other content, has its place here.
  bool hasSomeOf(const char* bytes, std::size_t length) const;

  /// Of all bytes so far.
  std::uint64_t whole() const;

 private:
  struct PartialBlock;
  void addToPartial(const char* bytes, std::size_t length);

  std::uint64_t seed_;
  std::vector<std::uint64_t> blocks_;  // of the full ones
  std::size_t filled_ = 0;
  std::unique_ptr<PartialBlock> partial_;
};

/// The hash of a file's content, whatever its present position; nullopt and the error number
/// (`errno` values) when it cannot be read.
std::optional<std::uint64_t> hashOfFile(int file, std::uint64_t seed, int& error);

}  // namespace playerx
