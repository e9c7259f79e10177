#include <gtest/gtest.h>

#include "playerx/app/inputs/InputKind.h"

namespace playerx {
namespace {

InputKind kindOf(const std::string& argument) {
  FailureReason reason;
  return sortInput(argument, &reason);
}

TEST(InputKindTest, WebAddressesAreAddresses) {
  for (const char* argument : {"http://h/a.avi", "https://h:8443/a b.mkv", "HTTP://h/a.avi?x=.tix",
                               "http://127.0.0.1/film.tix"}) {
    EXPECT_EQ(kindOf(argument), InputKind::kAddress) << argument;
  }
}

TEST(InputKindTest, PathsThatEndInTixAreTickets) {
  for (const char* argument : {"film.tix", "/a/b.TIX", "\"with blanks.tix\"", "./x.tix"}) {
    EXPECT_EQ(kindOf(argument), InputKind::kTicket) << argument;
  }
}

TEST(InputKindTest, EverythingElseIsRefusedWithAReason) {
  for (const char* argument :
       {"", "film.avi", "ftp://h/a.avi", "http:///a.avi", "http://", "file:///a.tix",
        "http://[bad/a.avi", "mailto:x@y", "http://user:word@h/a.avi"}) {
    FailureReason reason;
    EXPECT_EQ(sortInput(argument, &reason), InputKind::kUnusable) << argument;
    EXPECT_EQ(reason.code, "unsupported_url") << argument;
    EXPECT_FALSE(reason.sentence.empty()) << argument;
  }
}

TEST(InputKindTest, APortThatIsNoneIsNamed) {
  FailureReason reason;
  EXPECT_EQ(sortInput("http://h:99999/a.avi", &reason), InputKind::kUnusable);
  EXPECT_EQ(reason.code, "unsupported_url");
  EXPECT_EQ(reason.sentence, "There is no port 99999; give one from 1 to 65535 in the address.");
  EXPECT_EQ(sortInput("http://h:0/a.avi", &reason), InputKind::kUnusable);
}

}  // namespace
}  // namespace playerx
