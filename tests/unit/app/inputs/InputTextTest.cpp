#include <gmock/gmock.h>

#include "playerx/app/inputs/InputText.h"

namespace playerx::inputs {
namespace {

using reasons::Reason;

TEST(InputTextTest, WebAddressesAreTaken) {
  for (const char* argument : {"http://h/a.avi", "https://h:8443/a b.mkv", "HTTP://h/a.avi?x=.tix",
                               "http://127.0.0.1/film.tix"}) {
    EXPECT_FALSE(isTicketPath(argument)) << argument;
    EXPECT_EQ(refusalOfAddress(argument), std::nullopt) << argument;
  }
}

TEST(InputTextTest, PathsThatEndInTixAreTickets) {
  for (const char* argument : {"film.tix", "/a/b.TIX", "\"with blanks.tix\"", "./x.tix"}) {
    EXPECT_TRUE(isTicketPath(argument)) << argument;
  }
  for (const char* argument : {"", "film.avi", "file:///a.tix", "film.tix.avi"}) {
    EXPECT_FALSE(isTicketPath(argument)) << argument;
  }
}

TEST(InputTextTest, EverythingElseIsRefusedWithAReason) {
  for (const char* argument : {"", "film.avi", "ftp://h/a.avi", "http:///a.avi", "http://",
                               "file:///a.tix", "http://[bad/a.avi", "mailto:x@y"}) {
    EXPECT_EQ(refusalOfAddress(argument), Reason::kNoAddress) << argument;
  }
  EXPECT_EQ(refusalOfAddress("http://user:word@h/a.avi"), Reason::kCredentialsInAddress);
  EXPECT_EQ(refusalOfAddress("http://h/a\n.avi"), Reason::kUnescapedAddress);
  EXPECT_EQ(refusalOfAddress("http://h:99999/a.avi"), Reason::kBadPort);
  EXPECT_EQ(refusalOfAddress("http://h:0/a.avi"), Reason::kBadPort);
  EXPECT_EQ(refusalOfAddress("http://[::1]/a.avi"), Reason::kNumericHost6);
  EXPECT_EQ(refusalOfAddress("https://[fe80::1]:8443/a.avi"), Reason::kNumericHost6);
  EXPECT_EQ(refusalOfAddress("http://h/?to=https://g/a.avi"), Reason::kMisplacedHttps);
  EXPECT_EQ(refusalOfAddress("http://HTTPS.example/a.avi"), Reason::kMisplacedHttps);
}

TEST(InputTextTest, BytesThatAreNotUtf8AreEscaped) {
  EXPECT_EQ(cleaned("http://h/\xff\xC3\xA4.avi "), "http://h/%FF%C3%A4.avi");
  EXPECT_EQ(cleaned("http://h/\xC3\xA4.avi"), "http://h/\xC3\xA4.avi");
}

TEST(InputTextTest, OfAPathNothingIsDropped) { EXPECT_EQ(cleaned(" a.tix "), " a.tix "); }

TEST(InputTextTest, AnAddressIsWhatItsServerIsAskedFor) {
  EXPECT_EQ(cleaned("http://h/a.avi#t=10"), "http://h/a.avi");
  EXPECT_EQ(cleaned("http://u:p@b\u00FCcher.example:8080/\u00E4.avi"),
            "http://u:p@xn--bcher-kva.example:8080/\u00E4.avi");
  EXPECT_EQ(cleaned("http://h:80"), "http://h:80");
  EXPECT_EQ(cleaned("http://anna:12#34@h/a.mkv"), "http://anna:12#34@h/a.mkv");
}

}  // namespace
}  // namespace playerx::inputs
