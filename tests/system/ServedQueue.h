#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {

inline constexpr std::uint64_t kServedQueueSize = 8'000'000;

/// A player that downloads slowly, beside which others come to the same queue.
class ServedQueueTest : public testing::Test {
 protected:
  support::Nginx slow{{.limitRate = "1m"}};
  support::Nginx quick;
  PlayerHome home;

  std::string offerSlow(const std::string& name) {
    writeDistinctFile(slow.root() / name, kServedQueueSize);
    return slow.url("/" + name);
  }

  std::string offerQuick(const std::string& name) {
    quick.serve(name, distinctBytes(5000));
    return quick.url("/" + name);
  }

  std::unique_ptr<support::Process> startSlow(const std::string& name) {
    auto player = std::make_unique<support::Process>(home.startOptions({"get", offerSlow(name)}));
    EXPECT_TRUE(player->waitForOutput("\"percent\":1")) << player->errors();
    return player;
  }

  std::vector<std::string> titles() {
    std::vector<std::string> list;
    for (const Json& item : home.queue()) list.push_back(item["title"]);
    return list;
  }
};

}  // namespace system_test
