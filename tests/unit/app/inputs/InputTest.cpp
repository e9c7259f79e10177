#include <gmock/gmock.h>

#include "playerx/app/inputs/Input.h"
#include "tests/support/TempDir.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::inputs {
namespace {

using testing::ElementsAre;

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
  const std::string path = folder_.write("a.tix", "TixVeskVersion=1.0\n");
  EXPECT_EQ(refusalOf(path), "empty_ticket");
  words_ = {"First.", "The services are closed."};
  EXPECT_EQ(refusalOf(path), "services");
  EXPECT_EQ(add(path)->sentence(), "The services are closed.");
}

TEST_F(AddInputTest, ATicketThatTheManagerCouldNotReadIsNotCalledEmpty) {
  EXPECT_EQ(refusalOf(ticket("a.tix")), "bad_ticket");
}

TEST_F(AddInputTest, ATicketThatCannotBeReadNeverReachesTheManager) {
  EXPECT_EQ(refusalOf(folder_ / "none.tix"), "bad_ticket");
  EXPECT_TRUE(log_.lines().empty());
}

}  // namespace
}  // namespace playerx::inputs
