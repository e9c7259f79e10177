#include <gtest/gtest.h>

#include "plugin/PathMatch.h"

namespace plugin {
namespace {

TEST(PathMatch, TakesSlashesForTheSeparatorAndCapitalsForSmallLetters) {
  EXPECT_TRUE(isSamePath(L"C:\\Videos\\A.avi", L"c:/videos/a.avi", L'\\'));
  EXPECT_TRUE(isSamePath(L"c:/videos/a.avi", L"C:\\Videos\\A.avi", L'\\'));
}

TEST(PathMatch, LeavesABackslashAloneWhereTheSeparatorIsASlash) {
  EXPECT_FALSE(isSamePath(L"/films\\a.avi", L"/films/a.avi", L'/'));
  EXPECT_TRUE(isSamePath(L"/Films/a\\b.avi", L"/films/A\\B.AVI", L'/'));
}

TEST(PathMatch, ComparesTheWholeLength) {
  EXPECT_FALSE(isSamePath(L"/films/a.avi", L"/films/a.av", L'/'));
  EXPECT_FALSE(isSamePath(L"/films/a.av", L"/films/a.avi", L'/'));
  EXPECT_FALSE(isSamePath(L"", L"/", L'/'));
  EXPECT_TRUE(isSamePath(L"", L"", L'/'));
}

TEST(PathMatch, ComparesCharactersThatHaveNoCase) {
  EXPECT_TRUE(isSamePath(L"/\x65E5\x672C.avi", L"/\x65E5\x672C.AVI", L'/'));
  EXPECT_FALSE(isSamePath(L"/\x65E5.avi", L"/\x672C.avi", L'/'));
}

}  // namespace
}  // namespace plugin
