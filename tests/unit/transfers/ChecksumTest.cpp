#include <gtest/gtest.h>

#include "playerx/transfers/Checksum.h"

namespace playerx::transfers {
namespace {

const std::string kOne(64, 'a');
const std::string kTwo(64, 'b');

TEST(ChecksumTest, TheSumOfTheFilmIsFoundAmongThoseOfOthers) {
  EXPECT_EQ(sumIn(kOne + "  one.avi\n" + kTwo + " *two.avi\r\n", "two.avi"), kTwo);
  EXPECT_EQ(sumIn(kOne + "  films/one.avi\n" + kTwo + "  two.avi\n", "one.avi"), kOne);
  EXPECT_EQ(sumIn("SHA256 (one.avi) = " + kOne + "\nSHA256 (b) = " + kTwo, "one.avi"), kOne);
}

TEST(ChecksumTest, TheOnlySumNeedsNoName) {
  EXPECT_EQ(sumIn(kOne, "film.avi"), kOne);
  EXPECT_EQ(sumIn(std::string(64, 'A') + "\n", "film.avi"), kOne);
  EXPECT_EQ(sumIn(kOne + "  a name of the provider's.avi\n", "film.avi"), kOne);
}

TEST(ChecksumTest, SumsThatMayBeAnotherFilmsAreNotTaken) {
  EXPECT_EQ(sumIn(kOne + "  one.avi\n" + kTwo + "  two.avi\n", "film.avi"), std::nullopt);
  EXPECT_EQ(sumIn("<html>no such file</html>", "film.avi"), std::nullopt);
  EXPECT_EQ(sumIn("", "film.avi"), std::nullopt);
  EXPECT_EQ(sumIn(kOne + "0  film.avi", "film.avi"), std::nullopt);
}

TEST(ChecksumTest, TheFileLiesBesideTheFilm) {
  EXPECT_EQ(checksumAddress("http://host/a.avi"), "http://host/a.avi.sha256");
  EXPECT_EQ(checksumAddress("http://host/a.avi?key=1"), "http://host/a.avi.sha256?key=1");
}

}  // namespace
}  // namespace playerx::transfers
