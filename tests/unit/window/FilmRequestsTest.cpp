#include <gtest/gtest.h>

#include "playerx/window/queue/FilmRequests.h"

namespace playerx::window {
namespace {

using session::Request;

std::vector<unsigned int> idsOf(const FilmRequests::Requests& requests) {
  std::vector<unsigned int> ids;
  for (const Request& request : requests) ids.push_back(request.id.value_or(0));
  return ids;
}

using Ids = std::vector<unsigned int>;

TEST(FilmRequestsTest, FilmsThatMoveTogetherKeepTheirOrder) {
  const FilmRequests films(0);
  EXPECT_EQ(idsOf(films.move({2, 3}, Move::kUp)), Ids({2, 3}));
  EXPECT_EQ(idsOf(films.move({2, 3}, Move::kDown)), Ids({3, 2}));
  EXPECT_EQ(idsOf(films.move({2, 3}, Move::kToTop)), Ids({3, 2}));
  EXPECT_EQ(idsOf(films.move({2, 3}, Move::kToBottom)), Ids({2, 3}));
}

TEST(FilmRequestsTest, TheFirstOfTheRetriedFilmsIsTheFirstOfTheQueue) {
  EXPECT_EQ(idsOf(FilmRequests(0, 4).retry({4, 5, 6})), Ids({6, 5, 4}));
}

TEST(FilmRequestsTest, AllFailedFilmsAreRetriedByOneRequest) {
  const auto requests = FilmRequests(0, 3).retry({4, 5, 6});
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests.front().action, Request::Action::kRetry);
  EXPECT_FALSE(requests.front().id);
}

TEST(FilmRequestsTest, TheOnlyFailedFilmIsRetriedLikeOneOfSeveral) {
  EXPECT_EQ(idsOf(FilmRequests(0, 1).retry({4})), Ids({4}));
}

TEST(FilmRequestsTest, FilmsAreNumberedFromAboveTheFirstIdOn) {
  const FilmRequests films(100);
  EXPECT_EQ(idsOf(films.stop({101, 107})), Ids({1, 7}));
  EXPECT_EQ(films.moveBefore({107}, 101).front().before, 1u);
}

TEST(FilmRequestsTest, FilmsOfAnEarlierQueueAreLeftOut) {
  const FilmRequests films(100);
  EXPECT_EQ(idsOf(films.remove({7, 100, 101}, false)), Ids({1}));
  EXPECT_TRUE(films.moveBefore({101}, 7).empty());
}

TEST(FilmRequestsTest, AFilmIsNotMovedInFrontOfItself) {
  EXPECT_TRUE(FilmRequests(0).moveBefore({1, 2}, 2).empty());
}

TEST(FilmRequestsTest, NothingBehindMeansTheEnd) {
  const auto requests = FilmRequests(0).moveBefore({1}, 0);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].direction, Request::Direction::kBottom);
}

TEST(FilmRequestsTest, RemovingSaysWhetherTheFileGoesToo) {
  EXPECT_TRUE(FilmRequests(0).remove({1}, true)[0].withFilm);
  EXPECT_FALSE(FilmRequests(0).remove({1}, false)[0].withFilm);
}

}  // namespace
}  // namespace playerx::window
