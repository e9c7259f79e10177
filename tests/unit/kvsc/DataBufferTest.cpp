#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

#include "kvsc/DataBuffer.h"
#include "tests/unit/kvsc/NoMemory.h"

namespace kvsc {
namespace {

std::string contentOf(const DataBuffer& buffer) {
  return std::string(buffer.GetData(), buffer.getDataSize());
}

std::string arrayOf(const DataBuffer& buffer) {
  return std::string(buffer.GetData(), buffer.GetSize());
}

TEST(DataBuffer, StartsWithoutAnArray) {
  const DataBuffer buffer;
  EXPECT_EQ(buffer.GetData(), nullptr);
  EXPECT_EQ(buffer.GetSize(), 0U);
  EXPECT_EQ(buffer.getDataSize(), 0U);
  EXPECT_EQ(buffer.getAllocations(), 0U);
}

TEST(DataBuffer, AllocMakesZeroBytesOfExactlyTheSize) {
  DataBuffer buffer;
  EXPECT_EQ(buffer.Alloc(5), 0);
  EXPECT_EQ(arrayOf(buffer), std::string(5, '\0'));
  EXPECT_EQ(buffer.getDataSize(), 0U);
}

TEST(DataBuffer, AllocForgetsTheOldBytes) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  EXPECT_EQ(buffer.Alloc(4), 0);
  EXPECT_EQ(arrayOf(buffer), std::string(4, '\0'));
}

TEST(DataBuffer, AllocKeepsTheNumberOfBytesInUse) {
  DataBuffer buffer;
  buffer.append("abcdef", 6);
  EXPECT_EQ(buffer.Alloc(2), 0);
  EXPECT_EQ(buffer.getDataSize(), 6U);
}

TEST(DataBuffer, ReAllocCopiesTheBytesInUse) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  EXPECT_EQ(buffer.ReAlloc(5), 0);
  EXPECT_EQ(arrayOf(buffer), std::string("abc\0\0", 5));
  EXPECT_EQ(contentOf(buffer), "abc");
}

TEST(DataBuffer, ReAllocDropsWhatIsNotInUse) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  buffer.setDataSize(1);
  EXPECT_EQ(buffer.ReAlloc(3), 0);
  EXPECT_EQ(arrayOf(buffer), std::string("a\0\0", 3));
}

TEST(DataBuffer, ReAllocToLessKeepsTheBeginning) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  EXPECT_EQ(buffer.ReAlloc(2), 0);
  EXPECT_EQ(arrayOf(buffer), "ab");
  EXPECT_EQ(buffer.getDataSize(), 3U);
}

TEST(DataBuffer, ReAllocOfNothingAllocates) {
  DataBuffer buffer;
  EXPECT_EQ(buffer.ReAlloc(2), 0);
  EXPECT_EQ(arrayOf(buffer), std::string(2, '\0'));
}

TEST(DataBuffer, FreeLeavesNothing) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  buffer.Free();
  EXPECT_EQ(buffer.GetData(), nullptr);
  EXPECT_EQ(buffer.GetSize(), 0U);
  EXPECT_EQ(buffer.getDataSize(), 0U);
}

TEST(DataBuffer, AppendGrowsToTheExactSize) {
  DataBuffer buffer;
  for (unsigned length = 1; length <= 100; ++length) {
    EXPECT_EQ(buffer.append("x", 1), 0);
    EXPECT_EQ(buffer.GetSize(), length);
    EXPECT_EQ(buffer.getAllocations(), length);
  }
  EXPECT_EQ(contentOf(buffer), std::string(100, 'x'));
}

TEST(DataBuffer, AppendWithinTheCapacityKeepsTheArray) {
  DataBuffer buffer;
  buffer.Alloc(6);
  const char* array = buffer.GetData();
  buffer.append("abc", 3);
  buffer.append("def", 3);
  EXPECT_EQ(buffer.GetData(), array);
  EXPECT_EQ(contentOf(buffer), "abcdef");
}

TEST(DataBuffer, AppendKeepsZeroBytes) {
  DataBuffer buffer;
  buffer.append("a\0b", 3);
  buffer.append("\0", 1);
  EXPECT_EQ(contentOf(buffer), std::string("a\0b\0", 4));
}

TEST(DataBuffer, AppendOfNothingToAnEmptyBufferAllocatesNoBytes) {
  DataBuffer buffer;
  EXPECT_EQ(buffer.append(nullptr, 0), 0);
  EXPECT_NE(buffer.GetData(), nullptr);
  EXPECT_EQ(buffer.GetSize(), 0U);
}

TEST(DataBuffer, AppendPastTheLargestLengthChangesNothing) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  EXPECT_EQ(buffer.append("x", UINT_MAX - 2), -1);
  EXPECT_EQ(contentOf(buffer), "abc");
}

TEST(DataBuffer, UpdateReplacesTheContentInTheSameArray) {
  DataBuffer buffer;
  buffer.append("abcdef", 6);
  const char* array = buffer.GetData();
  EXPECT_EQ(buffer.update("xy", 2), 0);
  EXPECT_EQ(buffer.GetData(), array);
  EXPECT_EQ(buffer.GetSize(), 6U);
  EXPECT_EQ(contentOf(buffer), "xy");
}

TEST(DataBuffer, UpdateThatDoesNotFitAllocatesExactlyItsSize) {
  DataBuffer buffer;
  buffer.append("ab", 2);
  EXPECT_EQ(buffer.update("vwxyz", 5), 0);
  EXPECT_EQ(buffer.GetSize(), 5U);
  EXPECT_EQ(contentOf(buffer), "vwxyz");
}

TEST(DataBuffer, UpdateToNothingAllocatesNothing) {
  DataBuffer buffer;
  EXPECT_EQ(buffer.update(nullptr, 0), 0);
  EXPECT_EQ(buffer.GetData(), nullptr);
  buffer.append("abc", 3);
  const char* array = buffer.GetData();
  EXPECT_EQ(buffer.update(nullptr, 0), 0);
  EXPECT_EQ(buffer.GetData(), array);
  EXPECT_EQ(buffer.GetSize(), 3U);
  EXPECT_EQ(buffer.getDataSize(), 0U);
}

TEST(DataBuffer, UpdateOfExactlyTheCapacityKeepsTheArray) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  const char* array = buffer.GetData();
  EXPECT_EQ(buffer.update("xyz", 3), 0);
  EXPECT_EQ(buffer.GetData(), array);
  EXPECT_EQ(buffer.getAllocations(), 1U);
  EXPECT_EQ(contentOf(buffer), "xyz");
}

TEST(DataBuffer, TheNumberOfBytesInUseIsWhatIsSet) {
  DataBuffer buffer;
  buffer.Alloc(4);
  std::copy_n("wxyz", 4, buffer.GetData());
  buffer.setDataSize(3);
  EXPECT_EQ(contentOf(buffer), "wxy");
  buffer.setDataSize(5);
  EXPECT_EQ(buffer.getDataSize(), 5U);
}

// With AddressSanitizer these two also prove that no byte outside the array is touched.
TEST(DataBuffer, ReAllocCopiesNoMoreThanTheCapacity) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  buffer.setDataSize(1'000'000);
  EXPECT_EQ(buffer.ReAlloc(2'000'000), 0);
  EXPECT_EQ(arrayOf(buffer), "abc" + std::string(1'999'997, '\0'));
}

TEST(DataBuffer, AppendWritesAfterTheBytesInUse) {
  DataBuffer buffer;
  buffer.setDataSize(2);
  EXPECT_EQ(buffer.append("c", 1), 0);
  EXPECT_EQ(contentOf(buffer), std::string("\0\0c", 3));
}

TEST(DataBufferWithoutMemory, AllocLeavesAnEmptyBuffer) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  const NoMemory noMemory;
  EXPECT_EQ(buffer.Alloc(4), -1);
  EXPECT_EQ(buffer.GetData(), nullptr);
  EXPECT_EQ(buffer.GetSize(), 0U);
  EXPECT_EQ(buffer.getDataSize(), 0U);
}

TEST(DataBufferWithoutMemory, AppendKeepsWhatIsThere) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  const NoMemory noMemory;
  EXPECT_EQ(buffer.append("def", 3), -1);
  EXPECT_EQ(buffer.ReAlloc(9), -1);
  EXPECT_EQ(contentOf(buffer), "abc");
  EXPECT_EQ(buffer.GetSize(), 3U);
}

TEST(DataBufferWithoutMemory, UpdateThatDoesNotFitLeavesAnEmptyBuffer) {
  DataBuffer buffer;
  buffer.append("abc", 3);
  const NoMemory noMemory;
  EXPECT_EQ(buffer.update("defg", 4), -1);
  EXPECT_EQ(buffer.GetData(), nullptr);
  EXPECT_EQ(buffer.getDataSize(), 0U);
}

}  // namespace
}  // namespace kvsc
