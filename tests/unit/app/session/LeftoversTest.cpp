#include <gmock/gmock.h>

#include "playerx/app/session/Leftovers.h"
#include "playerx/transfers/FilmMark.h"
#include "playerx/transfers/Part.h"
#include "playerx/transfers/PartState.h"
#include "tests/support/TempDir.h"

namespace playerx::session {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class LeftoversTest : public testing::Test {
 protected:
  /// Ten bytes of a film, with their state.
  transfers::PartPaths leave(const std::string& place, const std::string& address) {
    const transfers::PartPaths paths{folder_.path(), transfers::digestOf(place)};
    transfers::PartState state;
    state.address = address;
    state.place = place;
    state.answered = true;
    folder_.write(paths.state().filename().string(), writeState(state));
    folder_.write(paths.bytes().filename().string(), "0123456789");
    return paths;
  }

  std::vector<Leftover> find(const std::vector<model::ItemState>& queue) {
    return findLeftovers(folder_.path(), queue);
  }

  static model::ItemState item(const std::string& url) {
    model::ItemState state;
    state.url = url;
    return state;
  }

  bool isThere(const std::filesystem::path& file) { return std::filesystem::exists(file); }

  support::TempDir folder_;
};

TEST_F(LeftoversTest, WhatTheQueueKnowsIsNoLeftover) {
  leave("http://h/a.avi", "http://h/a.avi?key=1");
  EXPECT_THAT(find({item("http://h/a.avi?key=2")}), IsEmpty());
}

TEST_F(LeftoversTest, WhatTheQueueDoesNotKnowIsNamedWithItsAddress) {
  const transfers::PartPaths paths = leave("http://h/a.avi", "http://h/a.avi?key=1");
  const std::vector<Leftover> found = find({item("http://h/b.avi")});
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].key, paths.key);
  EXPECT_EQ(found[0].address, "http://h/a.avi?key=1");
  EXPECT_GT(found[0].bytes, 10u);
}

TEST_F(LeftoversTest, EveryFileOfALeftoverIsDeleted) {
  const transfers::PartPaths paths = leave("http://h/a.avi", "http://h/a.avi");
  EXPECT_TRUE(deleteLeftover(folder_.path(), find({}).at(0)));
  EXPECT_THAT(find({}), IsEmpty());
  EXPECT_FALSE(isThere(paths.bytes()) || isThere(paths.state()));
}

TEST_F(LeftoversTest, WhatATransferIsAtWorkOnIsLeftAlone) {
  const transfers::PartPaths paths = leave("http://h/a.avi", "http://h/a.avi");
  int error = 0;
  const auto claimed = transfers::Part::claim(paths, error);
  ASSERT_NE(claimed, nullptr);
  EXPECT_FALSE(deleteLeftover(folder_.path(), find({}).at(0)));
  EXPECT_TRUE(isThere(paths.state()));
}

TEST_F(LeftoversTest, NothingIsLeftOverWhileAnItemHasNoAddress) {
  leave("http://h/a.avi", "http://h/a.avi");
  EXPECT_THAT(find({item("")}), IsEmpty());
}

TEST_F(LeftoversTest, BytesWithoutStateAreLeftOverWhenTheQueueDoesNotKnowTheirPlace) {
  folder_.write(transfers::digestOf("http://h/a.avi") + "-2.part", "0123456789");
  EXPECT_THAT(find({item("http://h/a.avi")}), IsEmpty());
  EXPECT_THAT(find({item("http://h/b.avi")}), SizeIs(1));
}

TEST_F(LeftoversTest, OtherFilesAreNoLeftovers) {
  folder_.write("notes.txt", "mine");
  EXPECT_THAT(find({}), IsEmpty());
}

TEST_F(LeftoversTest, AFolderThatIsMissingHasNone) {
  EXPECT_THAT(findLeftovers(folder_ / "none", {}), IsEmpty());
}

}  // namespace
}  // namespace playerx::session
