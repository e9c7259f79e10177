#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/Process.h"

namespace system_test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

const std::vector<std::string> kPrograms = {VESK_BUILT_PROGRAMS};
const std::vector<std::string> kLibraries = {VESK_BUILT_LIBRARIES};

/// A program or a library of the build.
class HardenedFiles : public testing::TestWithParam<std::string> {
 protected:
  static std::string readelf(const std::string& option, const std::string& file) {
    support::Process process({"readelf", "--wide", option, file});
    EXPECT_EQ(process.wait(), 0) << process.errors();
    return process.output();
  }

  const std::string header_ = readelf("--file-header", GetParam());
  const std::string segments_ = readelf("--program-headers", GetParam());
  const std::string dynamic_ = readelf("--dynamic", GetParam());
  const std::string symbols_ = readelf("--dyn-syms", GetParam());
};

TEST_P(HardenedFiles, LieAnywhereInMemory) {
  EXPECT_THAT(header_, ContainsRegex("Type: +DYN"));
  EXPECT_THAT(dynamic_, Not(HasSubstr("TEXTREL")));
}

TEST_P(HardenedFiles, HaveNoStackToRunCodeOn) {
  EXPECT_THAT(segments_, ContainsRegex("GNU_STACK .* RW +0x"));
}

TEST_P(HardenedFiles, ResolveEverySymbolBeforeTheirTablesBecomeReadOnly) {
  EXPECT_THAT(segments_, HasSubstr("GNU_RELRO"));
  EXPECT_THAT(dynamic_, ContainsRegex("FLAGS_1.* NOW"));
}

TEST_P(HardenedFiles, TakeNoLibraryFromTheFolderThatTheUserIsIn) {
  EXPECT_THAT(dynamic_, Not(ContainsRegex("PATH[^[]*\\[([^]]*:)?[^/$]"))) << "a relative path";
}

// The builds that are installed. The others join sources, and with them what these call.
#ifdef VESK_OPTIMISED
TEST_P(HardenedFiles, NoticeAnOverwrittenStack) {
  EXPECT_THAT(symbols_, HasSubstr("__stack_chk_fail"));
}

TEST(HardenedModule, HasTheCLibraryCheckLengths) {
  support::Process process({"readelf", "--wide", "--dyn-syms", kLibraries.front()});
  ASSERT_EQ(process.wait(), 0) << process.errors();
  EXPECT_THAT(process.output(), ContainsRegex("__[a-z_]+_chk@"));
}

TEST(CommandLine, LoadsLibcurlOnlyWhenItAsksAServer) {
  support::Process process({"readelf", "--wide", "--dynamic", "--dyn-syms", kPrograms.back()});
  ASSERT_EQ(process.wait(), 0) << process.errors();
  EXPECT_THAT(process.output(), Not(HasSubstr("libcurl")));
  EXPECT_THAT(process.output(), Not(HasSubstr("curl_"))) << "the plug-ins have it from the library";
}
#endif

INSTANTIATE_TEST_SUITE_P(Programs, HardenedFiles, testing::ValuesIn(kPrograms));
INSTANTIATE_TEST_SUITE_P(Libraries, HardenedFiles, testing::ValuesIn(kLibraries));

}  // namespace
}  // namespace system_test
