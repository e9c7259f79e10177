#include <gmock/gmock.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/soak/Count.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

constexpr std::size_t kSize = 5'000'000;

/// How a server behaves while a film is fetched in several goes.
struct Behaviour {
  const char* name;
  Film film;          ///< at first
  Film later;         ///< once something has arrived
  bool lies = false;  ///< its ranges hold other bytes than they say
};

Film unnamed(Film film) {
  film.etag.clear();
  return film;
}

std::vector<Behaviour> behaviours() {
  const Film film = filmOf(kSize);
  Film weak = film;
  weak.etag = "W/\"v1\"";
  Film rangeless = film;
  rangeless.ranges = false;
  Film endless = film;
  endless.length = false;
  Film other = filmOf(kSize, 2);
  other.etag = "\"v2\"";
  Film careless = other;
  careless.minds = false;
  Film shorter = filmOf(kSize / 2, 3);
  return {
      {"an exact server", film, film},
      {"only a weak validator", weak, weak},
      {"no validator at all", unnamed(film), unnamed(film)},
      {"no ranges", rangeless, rangeless},
      {"no length", endless, endless},
      {"another version later", film, other},
      {"another version later, the condition not looked at", film, careless},
      {"another version later, without validator", unnamed(film), unnamed(other)},
      {"a shorter version later, without validator", unnamed(film), unnamed(shorter)},
      {"other bytes than the range says", film, film, true},
  };
}

class Resume : public DownloadsFixture {
 protected:
  std::size_t anyPlace() {
    return std::uniform_int_distribution<std::size_t>(1, kSize - 1)(random_);
  }

  /// Has the next answer break off, at any byte; with some luck in the midst of the head.
  void breakNext(FilmServer& server) {
    if (random_() % 20 == 0) {
      server.answerNext("HTTP/1.1 200 OK\r\nContent-Le");
    } else {
      server.cutNext(anyPlace());
    }
  }

  /// An answer whose bytes are not those that its head speaks of.
  static void lieNext(FilmServer& server) {
    server.answerNext(
        "HTTP/1.1 206 Partial Content\r\nETag: \"v1\"\r\nConnection: close\r\n"
        "Content-Range: bytes 0-999/5000000\r\nContent-Length: 1000\r\n\r\n" +
        std::string(1000, 'x'));
  }

  /// Fetches some of the film, stops, and perhaps begins anew as the next run of the player does.
  void fetchSome(FilmServer& server) {
    const std::size_t place = anyPlace();
    server.stallNext(place);
    const unsigned long long uid = start(server.url());
    const std::size_t wanted = random_() % 4 == 0 ? 1 : place;
    EXPECT_TRUE(support::waitFor([&] { return report(uid).arrived >= wanted; }));
    downloads_->stopSession(uid);
    if (random_() % 2 == 0) restart();
  }

  void expectHonest(const Behaviour& behaviour) {
    SCOPED_TRACE(behaviour.name);
    FilmServer server(behaviour.film);
    fetchSome(server);
    server.setFilm(behaviour.later);
    if (behaviour.lies) lieNext(server);
    for (auto cuts = random_() % 3; cuts > 0; --cuts) breakNext(server);
    const Reported reported = fetch(server.url());
    if (!reported.complete) {
      ++failures_;
      EXPECT_EQ(filesIn(movies()), std::vector<std::string>());
    } else {
      EXPECT_TRUE(film() == behaviour.later.content)
          << film().size() << " bytes of " << testing::PrintToString(filesIn(movies()))
          << testing::PrintToString(reported.events);
    }
    restart();
    std::filesystem::remove_all(movies());
    std::filesystem::remove_all(parts());
  }

  int failures_ = 0;
  std::mt19937 random_{std::random_device{}()};
};

TEST_F(Resume, AfterAnyCutEndsWithTheRightBytesOrAnHonestFailure) {
  const std::vector<Behaviour> all = behaviours();
  const int cuts = soak::countOr(1);
  for (int cut = 0; cut < cuts && !HasFailure(); ++cut) {
    for (const Behaviour& behaviour : all) expectHonest(behaviour);
  }
  std::cout << cuts * all.size() << " films, " << failures_ << " honest failures" << std::endl;
}

}  // namespace
}  // namespace playerx::transfers
