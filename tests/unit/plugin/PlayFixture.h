#pragma once

#include <string>
#include <vector>

#include "tests/unit/plugin/ManagerFixture.h"

/// What the player is given.
class PlayFixture : public ManagerFixture {
 protected:
  const std::vector<std::string> kFilmOpened{std::string("player.open ") + kFilm};

  void begin(const std::string& queue, int percent) {
    given(queue, [percent](Item& item) { item.setPercentDownloaded(percent); });
    start();
  }
  void beginAsleep(const std::string& queue, int percent) {
    startAsleep(queue, [percent](Item& item) { item.setPercentDownloaded(percent); });
    log_.clear();
  }

  /// Reports wait until the manager knows of their transfer.
  void awaitPercent(const std::string& title, int percent) {
    EXPECT_TRUE(support::waitFor([&] { return percentOf(title) == percent; }));
  }

  std::string opened(const std::string& title) {
    return "player.open " + mediaFile(title + ".vesk").string();
  }
};
