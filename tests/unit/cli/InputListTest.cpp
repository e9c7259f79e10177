#include <gmock/gmock.h>

#include <sstream>

#include "playerx/cli/InputList.h"
#include "tests/support/TempDir.h"

namespace playerx::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(InputListTest, CommentsBlanksAndEmptyLinesAreDropped) {
  std::istringstream list("# films\n\n  http://h/a.avi\t\r\n   \nb.tix");
  EXPECT_THAT(readInputList(list), ElementsAre("http://h/a.avi", "b.tix"));
}

TEST(InputListTest, AByteOrderMarkIsDropped) {
  std::istringstream comment("\xEF\xBB\xBF# films\nhttp://h/a.avi");
  EXPECT_THAT(readInputList(comment), ElementsAre("http://h/a.avi"));
  std::istringstream address("\xEF\xBB\xBFhttp://h/a.avi\n\xEF\xBB\xBFhttp://h/b.avi");
  EXPECT_THAT(readInputList(address), ElementsAre("http://h/a.avi", "\xEF\xBB\xBFhttp://h/b.avi"));
}

TEST(InputListTest, AFileIsAddedToTheArguments) {
  const support::TempDir folder;
  std::vector<std::string> inputs = {"http://h/a.avi"};
  EXPECT_EQ(readInputFile(folder.write("list", "http://h/b.avi\n"), inputs), "");
  EXPECT_THAT(inputs, ElementsAre("http://h/a.avi", "http://h/b.avi"));
}

TEST(InputListTest, AnEmptyFileNamesNothing) {
  const support::TempDir folder;
  std::vector<std::string> inputs;
  EXPECT_EQ(readInputFile(folder.write("list", ""), inputs), "");
  EXPECT_THAT(inputs, IsEmpty());
}

TEST(InputListTest, AFileThatCannotBeReadIsSaid) {
  const support::TempDir folder;
  std::vector<std::string> inputs;
  EXPECT_THAT(readInputFile(folder / "none", inputs), HasSubstr("No such file"));
  EXPECT_THAT(readInputFile(folder.path(), inputs), HasSubstr("cannot be read"));
}

}  // namespace
}  // namespace playerx::cli
