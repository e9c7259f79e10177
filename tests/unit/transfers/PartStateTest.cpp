#include <gtest/gtest.h>

#include "playerx/transfers/PartState.h"
#include "tests/support/TempDir.h"

namespace playerx::transfers {
namespace {

PartState arriving() {
  PartState state;
  state.address = "http://h/film.avi?token=1";
  state.place = "http://h/film.avi";
  state.answered = true;
  state.total = 1000;
  state.validator = {"\"a\"", "Wed, 01 Jan 2025 12:00:00 GMT", true};
  state.durable = 500;
  state.boot = "boot";
  return state;
}

TEST(PartStateTest, AnArrivingPartComesBackAsItWas) {
  EXPECT_EQ(readState(writeState(arriving())), arriving());
  PartState unknown = arriving();
  unknown.total.reset();
  EXPECT_EQ(readState(writeState(unknown)), unknown);
}

TEST(PartStateTest, TextThatIsNotUtf8DoesNotSpoilTheRest) {
  PartState state = arriving();
  state.validator.etag = "\"\xFF\"";
  const auto back = readState(writeState(state));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->address, state.address);
}

TEST(PartStateTest, EveryCutOfTheTextIsRefusedOrRead) {
  const std::string text = writeState(arriving());
  for (std::size_t length = 0; length + 2 < text.size(); ++length) {
    EXPECT_FALSE(readState(text.substr(0, length))) << length;
  }
}

TEST(PartStateTest, OtherTextsAreRefused) {
  for (const char* text : {"", "null", "[]", "7", "\"x\"", "{}", "{\"format\": 1}",
                           "{\"format\": 2, \"address\": "
                           "\"a\", \"place\": \"b\"}",
                           "{\"format\": 1, \"address\": 7, \"place\": \"b\"}"}) {
    EXPECT_FALSE(readState(text)) << text;
  }
}

TEST(PartStateTest, MembersOfOtherKindsCountAsAbsent) {
  const auto state = readState(
      R"({"format": 1, "address": "a", "place": "b", "answered": 1, "total": -5, "etag": 3,)"
      R"( "durable": "x", "boot": null})");
  ASSERT_TRUE(state);
  EXPECT_FALSE(state->answered);
  EXPECT_FALSE(state->total);
  EXPECT_EQ(state->validator, Validator{});
  EXPECT_EQ(state->durable, 0u);
}

TEST(PartStateTest, AStateFileIsForItsOwnerAlone) {
  const support::TempDir folder;
  const auto file = folder / "state.json";
  EXPECT_FALSE(loadState(file));
  ASSERT_EQ(storeState(file, arriving()), 0);
  EXPECT_EQ(loadState(file), arriving());
  namespace fs = std::filesystem;
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_NE(storeState(folder / "missing/state.json", arriving()), 0);
}

}  // namespace
}  // namespace playerx::transfers
