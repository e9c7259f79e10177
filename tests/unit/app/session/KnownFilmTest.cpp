#include <gtest/gtest.h>

#include <filesystem>

#include "playerx/app/session/KnownFilm.h"
#include "tests/support/TempDir.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::session {
namespace {

model::ItemState item(unsigned int id, const std::string& url, DownloadStatusEnumType status) {
  model::ItemState state;
  state.id = id;
  state.url = url;
  state.status = status;
  return state;
}

using Keep = model::QueueTracker::Keep;

/// Whether a film of a queue is known by this spelling of its address, complete or not.
bool isKnown(const std::string& inQueue, const std::string& spelling) {
  support::EventLog log;
  FakeModule module(log);
  module.put("http://elsewhere/film.avi", DownloadStatusCompleted);
  const unsigned int id = module.put(inQueue, DownloadStatusCompleted).getId();
  const auto among = findKnownFilm(model::snapshotOf(module), spelling);
  const auto kept = findKnownFilm(model::QueueTracker(module, Keep::kAll), spelling);
  const auto asked = findKnownFilm(model::QueueTracker(module, Keep::kUnlessComplete), spelling);
  EXPECT_EQ(among, kept);
  EXPECT_EQ(among, asked);
  return among && among->id == id;
}

TEST(KnownFilmTest, AnAddressIsKnownInEverySpelling) {
  const auto found =
      findKnownFilm({item(7, "http://h/a%20b.avi", DownloadStatusQueued)}, "http://h/a b.avi#top");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->id, 7u);
}

TEST(KnownFilmTest, EveryEndOfAnAddressIsKnownInEverySpelling) {
  const std::vector<std::pair<std::string, std::string>> spellings = {
      {"http://h", "http://h:80/"},
      {"http://h?a=b", "http://h/?a=b"},
      {"http://h/a/../b.avi", "http://user:word@h/b.avi"},
      {"http://h/a/b/..", "http://h/a/"},
      {"http://h/a?b=c/d#e", "HTTP://h/./a?b=c/d"},
      {"http://h/\xC3\xA4.avi", "http://h/%C3%A4.avi"},
  };
  for (const auto& [one, other] : spellings) {
    EXPECT_TRUE(isKnown(one, other)) << one;
    EXPECT_TRUE(isKnown(other, one)) << one;
  }
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
