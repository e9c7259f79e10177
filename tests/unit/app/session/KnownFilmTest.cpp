#include <gtest/gtest.h>

#include <filesystem>

#include "playerx/app/session/KnownFilm.h"
#include "tests/support/TempDir.h"

namespace playerx::session {
namespace {

model::ItemState item(unsigned int id, const std::string& url, DownloadStatusEnumType status) {
  model::ItemState state;
  state.id = id;
  state.url = url;
  state.status = status;
  return state;
}

TEST(KnownFilmTest, AnAddressIsKnownInEverySpelling) {
  const auto found =
      findKnownFilm({item(7, "http://h/a%20b.avi", DownloadStatusQueued)}, "http://h/a b.avi#top");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->id, 7u);
}

TEST(KnownFilmTest, AnotherAddressIsNotKnown) {
  const std::vector<model::ItemState> queue = {item(7, "http://h/a.avi", DownloadStatusQueued)};
  EXPECT_FALSE(findKnownFilm(queue, "http://h/b.avi"));
  EXPECT_FALSE(findKnownFilm(queue, "a.tix"));
}

TEST(KnownFilmTest, OfSeveralTheOneThatHasComeFarthestIsFound) {
  const std::vector<model::ItemState> queue = {item(1, "http://h/a.avi", DownloadStatusFailed),
                                               item(2, "http://h/a.avi", DownloadStatusQueued),
                                               item(3, "http://h/a.avi", DownloadStatusCompleted),
                                               item(4, "http://h/a.avi", DownloadStatusStopped)};
  EXPECT_EQ(findKnownFilm(queue, "http://h/a.avi")->id, 3u);
}

TEST(KnownFilmTest, AFilmIsFoundAtItsPlaceOrInThePresentFolder) {
  const support::TempDir media;
  model::ItemState film = item(1, "http://h/a.avi", DownloadStatusCompleted);
  film.path = "/elsewhere/a.avi";
  EXPECT_EQ(findFilm(film, media.path()), "");
  const std::string file = media.write("a.avi", "film");
  EXPECT_EQ(findFilm(film, media.path()), file);
  film.path = file;
  EXPECT_EQ(findFilm(film, "/elsewhere"), file);
}

}  // namespace
}  // namespace playerx::session
