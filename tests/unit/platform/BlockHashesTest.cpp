#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "playerx/platform/BlockHashes.h"

namespace playerx {
namespace {

constexpr std::size_t kBlock = BlockHashes::kBlock;

BlockHashes hashesOf(const std::string& content, std::size_t piece) {
  BlockHashes hashes(1);
  for (std::size_t at = 0; at < content.size(); at += piece) {
    hashes.add(content.data() + at, std::min(piece, content.size() - at));
  }
  return hashes;
}

TEST(BlockHashesTest, DoNotDependOnThePiecesInWhichTheContentCame) {
  std::string content(3 * kBlock + 7, 'x');
  content[kBlock] = 'y';
  const std::uint64_t whole = hashesOf(content, content.size()).whole();
  for (const std::size_t piece : {std::size_t{1}, kBlock - 1, kBlock, kBlock + 1}) {
    const BlockHashes hashes = hashesOf(content, piece);
    EXPECT_EQ(hashes.whole(), whole) << piece;
    EXPECT_EQ(hashes.count(), 3U) << piece;
    EXPECT_EQ(hashes.filled(), 7U) << piece;
  }
}

TEST(BlockHashesTest, DifferWhereTheContentDoes) {
  const std::string content(2 * kBlock + 1, 'x');
  for (const std::size_t place : {std::size_t{0}, kBlock - 1, kBlock, 2 * kBlock}) {
    std::string other = content;
    other[place] = 'y';
    EXPECT_NE(hashesOf(other, kBlock).whole(), hashesOf(content, kBlock).whole()) << place;
    EXPECT_EQ(hashesOf(other, 1).hasSameBlock(0, hashesOf(content, 1)), place >= kBlock) << place;
  }
}

TEST(BlockHashesTest, TellWhetherOtherContentHasSomethingInCommon) {
  std::string content;
  for (std::size_t block = 0; block < 40; ++block) content.append(kBlock, char('0' + block));
  const BlockHashes hashes = hashesOf(content, kBlock);
  const auto hasSomeOf = [&hashes](const std::string& other) {
    return hashes.hasSomeOf(other.data(), other.size());
  };
  EXPECT_TRUE(hasSomeOf(content));
  EXPECT_TRUE(hasSomeOf(content.substr(0, 20 * kBlock)));
  EXPECT_TRUE(hasSomeOf(content + content));
  EXPECT_TRUE(hasSomeOf(std::string(20 * kBlock, '-') + content.substr(20 * kBlock)));
  EXPECT_TRUE(hasSomeOf(content.substr(0, 20 * kBlock) + std::string(20 * kBlock, '-')));
  EXPECT_FALSE(hasSomeOf("-" + content));
  EXPECT_FALSE(hasSomeOf(content.substr(1)));
  EXPECT_FALSE(hasSomeOf(content.substr(0, kBlock - 1)));
  EXPECT_FALSE(hasSomeOf(""));
  EXPECT_FALSE(BlockHashes(1).hasSomeOf(content.data(), content.size()));
}

TEST(BlockHashesTest, AreThoseOfTheContentWhenABlockIsReplaced) {
  const std::string content(3 * kBlock + 7, 'x');
  std::string other = content;
  other.replace(kBlock, kBlock, std::string(kBlock, 'y'));
  BlockHashes hashes = hashesOf(content, kBlock);
  hashes.replaceBlock(1, other.data() + kBlock);
  EXPECT_EQ(hashes.whole(), hashesOf(other, kBlock).whole());
}

}  // namespace
}  // namespace playerx
