#include <gmock/gmock.h>

#include "playerx/app/inputs/Input.h"
#include "tests/support/TempDir.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::inputs {
namespace {

using reasons::Reason;
using testing::ElementsAre;

TEST(InputTest, WebAddressesAreTaken) {
  for (const char* argument : {"http://h/a.avi", "https://h:8443/a b.mkv", "HTTP://h/a.avi?x=.tix",
                               "http://127.0.0.1/film.tix"}) {
    EXPECT_FALSE(isTicketPath(argument)) << argument;
    EXPECT_EQ(refusalOfAddress(argument), std::nullopt) << argument;
  }
}

TEST(InputTest, PathsThatEndInTixAreTickets) {
  for (const char* argument : {"film.tix", "/a/b.TIX", "\"with blanks.tix\"", "./x.tix"}) {
    EXPECT_TRUE(isTicketPath(argument)) << argument;
  }
  for (const char* argument : {"", "film.avi", "file:///a.tix", "film.tix.avi"}) {
    EXPECT_FALSE(isTicketPath(argument)) << argument;
  }
}

TEST(InputTest, EverythingElseIsRefusedWithAReason) {
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

class AddInputTest : public testing::Test {
 protected:
  std::optional<reasons::Explanation> add(const std::string& input) {
    return addInput(input, module_, [this] { return words_; });
  }

  std::string refusalOf(const std::string& input) {
    const auto refusal = add(input);
    return refusal ? refusal->code() : "";
  }

  std::string ticket(const std::string& name) const {
    return folder_.write(name, "TixVeskVersion=1.0\nstart\nurl=http://h/a.avi\nend\n");
  }

  support::TempDir folder_;
  support::EventLog log_;
  FakeModule module_{log_};
  std::vector<std::string> words_;
};

TEST_F(AddInputTest, AnAddressIsHandedToTheManager) {
  EXPECT_EQ(add("http://h/a.avi"), std::nullopt);
  EXPECT_THAT(log_.lines(), ElementsAre("manager.add http://h/a.avi"));
}

TEST_F(AddInputTest, ATitleIsReadWithoutEscapes) {
  const auto titleOf = [this](const std::string& address) {
    add(address);
    return module_.all().back()->getTitle();
  };
  EXPECT_EQ(titleOf("http://h/game%20of%20life.avi"), L"game of life.avi");
  EXPECT_EQ(titleOf("http://h/%C3%A9t%C3%A9.avi"), L"\u00E9t\u00E9.avi");
  EXPECT_EQ(titleOf("http://h/a%E2%80%8Cb.avi"), L"a\u200Cb.avi");
  EXPECT_EQ(titleOf("http://h/plain.avi"), L"film");  // left to the manager
  for (const char* unprintable : {"%FF", "%0A", "%7F", "%C2%9B", "%E2%80%AE", "%E2%81%A6"}) {
    const std::string address = std::string("http://h/a%20") + unprintable + ".avi";
    EXPECT_EQ(titleOf(address), L"film") << unprintable;
  }
}

TEST_F(AddInputTest, WhiteSpaceAroundAnAddressIsDropped) {
  EXPECT_EQ(add(" \thttp://h/a.avi \r\n"), std::nullopt);
  EXPECT_THAT(log_.lines(), ElementsAre("manager.add http://h/a.avi"));
  EXPECT_EQ(cleaned(" a.tix "), " a.tix ");
}

TEST(InputTest, BytesThatAreNotUtf8AreEscaped) {
  EXPECT_EQ(cleaned("http://h/\xff\xC3\xA4.avi "), "http://h/%FF%C3%A4.avi");
  EXPECT_EQ(cleaned("http://h/\xC3\xA4.avi"), "http://h/\xC3\xA4.avi");
}

TEST(InputTest, AnAddressIsWhatItsServerIsAskedFor) {
  EXPECT_EQ(cleaned("http://h/a.avi#t=10"), "http://h/a.avi");
  EXPECT_EQ(cleaned("http://u:p@b\u00FCcher.example:8080/\u00E4.avi"),
            "http://u:p@xn--bcher-kva.example:8080/\u00E4.avi");
  EXPECT_EQ(cleaned("http://h:80"), "http://h:80");
  EXPECT_EQ(cleaned("http://anna:12#34@h/a.mkv"), "http://anna:12#34@h/a.mkv");
}

TEST_F(AddInputTest, WhatTheManagerDoesNotTakeIsRefused) {
  EXPECT_EQ(refusalOf("http://h/a.txt"), "unsupported_type");
  EXPECT_EQ(refusalOf("film.avi"), "unsupported_url");
}

TEST_F(AddInputTest, ATicketIsHandedOverInItsQuotes) {
  module_.takesTickets = true;
  const std::string quoted = "\"" + ticket("a b.tix") + "\"";
  EXPECT_EQ(add(quoted), std::nullopt);
  EXPECT_THAT(log_.lines(), ElementsAre("manager.addTicket " + quoted));
}

TEST_F(AddInputTest, ATicketThatYieldsNothingIsRefusedInTheServicesWords) {
  const std::string path = ticket("a.tix");
  EXPECT_EQ(refusalOf(path), "empty_ticket");
  words_ = {"First.", "The services are closed."};
  EXPECT_EQ(refusalOf(path), "services");
  EXPECT_EQ(add(path)->sentence(), "The services are closed.");
}

TEST_F(AddInputTest, ATicketThatCannotBeReadNeverReachesTheManager) {
  EXPECT_EQ(refusalOf(folder_ / "none.tix"), "bad_ticket");
  EXPECT_TRUE(log_.lines().empty());
}

}  // namespace
}  // namespace playerx::inputs
