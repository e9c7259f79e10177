#include <gmock/gmock.h>

#include "playerx/app/inputs/OptionFault.h"
#include "tests/support/TempDir.h"

namespace playerx::inputs {
namespace {

using testing::HasSubstr;

TEST(OptionFaultTest, UsualOptionsHaveNone) {
  const support::TempDir folder;
  const std::string file = folder.write("netrc", "");
  EXPECT_EQ(faultOf({}), "");
  EXPECT_EQ(faultOf({.username = "\xC3\xA4nna",
                     .password = "p: @/",
                     .tries = 3,
                     .timeout = kLongestTimeout,
                     .headers = {"A: b", "C:\xC3\xA4"},
                     .referer = "http://h/",
                     .netrcFile = file,
                     .cookieFile = folder / "jar",
                     .sha256 = std::string(64, 'a')}),
            "");
}

TEST(OptionFaultTest, AHeaderIsOneLineOfUtf8) {
  for (const char* line : {"", "none", ": b", "A B: c", "A: b\r\nC: d", "A: \xff", "A: \x7f"}) {
    EXPECT_THAT(faultOfHeader(line), HasSubstr("\"Name: value\"")) << line;
  }
  EXPECT_THAT(faultOfHeader("RANGE: bytes=0-"), HasSubstr("\"RANGE\" is set by the player"));
}

TEST(OptionFaultTest, FilesAreWhereTheySayTheyAre) {
  const support::TempDir folder;
  folder.write("jar", "");
  EXPECT_EQ(faultOfCookieFile(folder / "jar"), "");
  for (const std::string& path :
       {std::string("jar"), std::string(), folder.path().string(), (folder / "none/jar").string(),
        (folder / "\xff").string(), std::string("/dev/null")}) {
    EXPECT_THAT(faultOfCookieFile(path), HasSubstr("Cookies cannot be kept")) << path;
  }
  EXPECT_THAT(faultOfNetrcFile(folder / "none"), HasSubstr("There is no file"));
}

TEST(OptionFaultTest, CookiesReplaceNothingElse) {
  const support::TempDir folder;
  for (const char* cookies :
       {"", "# Netscape HTTP Cookie File\n\n", "# a browser's\n# HTTP Cookie File\n",
        "h\tFALSE\t/\tFALSE\t0\tname\tvalue", "Set-Cookie: name=value\n"}) {
    EXPECT_EQ(faultOfCookieFile(folder.write("jar", cookies)), "") << cookies;
  }
  for (const char* other : {"# notes\n", "\n", "hello", "a\tb", "\x89PNG\r\n\x1a\n"}) {
    EXPECT_THAT(faultOfCookieFile(folder.write("jar", other)), HasSubstr("holds something else"))
        << other;
  }
}

TEST(OptionFaultTest, EverythingElseIsBounded) {
  EXPECT_NE(faultOf({.username = "\xff"}), "");
  EXPECT_NE(faultOf({.password = "a\nb"}), "");
  EXPECT_NE(faultOf({.tries = kMostTries + 1}), "");
  EXPECT_NE(faultOf({.timeout = kLongestTimeout + std::chrono::seconds(1)}), "");
  EXPECT_NE(faultOf({.referer = "a\nb"}), "");
  EXPECT_NE(faultOf({.sha256 = std::string(63, 'a')}), "");
  EXPECT_NE(faultOf({.sha256 = std::string(64, 'g')}), "");
}

TEST(OptionFaultTest, WhatMayBeSecretIsNotRepeated) {
  EXPECT_THAT(faultOfHeader("A: secret\n"), testing::Not(HasSubstr("secret")));
  EXPECT_THAT(faultOf({.password = "secret\n"}), testing::Not(HasSubstr("secret")));
}

}  // namespace
}  // namespace playerx::inputs
