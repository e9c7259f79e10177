#include <gmock/gmock.h>

#include "persistence/QueueDocument.h"

namespace persistence {
namespace {

std::string padded(std::string_view head) {
  std::string bytes(head);
  bytes.resize(std::max(bytes.size(), kQueueHeadSize), ' ');
  return bytes;
}

TEST(QueueFormat, IsKnownByTheFirstEightySixBytes) {
  EXPECT_EQ(kQueueHeadSize, 86U);
  EXPECT_EQ(formatOf(kLegacyHeader), QueueFormat::kLegacy);
  EXPECT_EQ(formatOf(padded(kQueueDeclaration)), QueueFormat::kCurrent);
  EXPECT_EQ(formatOf(padded("<?xml version=\"1.0\"?>")), QueueFormat::kUnknown);
  EXPECT_EQ(formatOf(padded("")), QueueFormat::kUnknown);
}

TEST(QueueFormat, ThirtySixBytesOfTheDeclarationCount) {
  EXPECT_EQ(kQueueDeclaration.size(), 36U);
  for (std::size_t at = 0; at < kQueueDeclaration.size(); ++at) {
    std::string head = padded(kQueueDeclaration);
    head[at] ^= 1;
    EXPECT_EQ(formatOf(head), QueueFormat::kUnknown) << at;
  }
}

TEST(QueueFormat, EveryByteOfTheLegacyHeaderCounts) {
  for (std::size_t at = 0; at < kLegacyHeader.size(); ++at) {
    std::string head(kLegacyHeader);
    head[at] ^= 1;
    EXPECT_EQ(formatOf(head), QueueFormat::kUnknown) << at;
  }
}

TEST(QueueFormat, AShorterFileIsEmptyOrUnknown) {
  EXPECT_EQ(formatOf(""), QueueFormat::kEmpty);
  EXPECT_EQ(formatOf(kEmptyQueueDocument), QueueFormat::kEmpty);
  EXPECT_EQ(formatOf(kEmptyQueueDocument.substr(0, 55)), QueueFormat::kUnknown);
  EXPECT_EQ(formatOf(kLegacyHeader.substr(0, 85)), QueueFormat::kUnknown);
  EXPECT_EQ(formatOf(padded(kQueueDeclaration).substr(0, 85)), QueueFormat::kUnknown);
}

}  // namespace
}  // namespace persistence
