#include <filesystem>
#include <thread>

#include "tests/unit/plugin/PartsFixture.h"

namespace plugin {
namespace {

class SharedQueueTest : public PartsFixture {
 protected:
  std::filesystem::path file() const { return folder_ / "downloadmanager.xml"; }
  std::string written() const { return support::readFile(file()); }
};

TEST_F(SharedQueueTest, ChangesAnItemThatIsQueued) {
  given("A1");
  EXPECT_TRUE(queue_.change(id(0), [](auto& item) { item.setSize(5); }));
  EXPECT_EQ(queue_.at(0)->getSize(), 5U);
  EXPECT_FALSE(queue_.change(0, [](auto&) { FAIL(); }));
  EXPECT_TRUE(log_.lines().empty()) << "not announced";
}

TEST_F(SharedQueueTest, TellsTheViewOfAChangeThatIsWritten) {
  given("A1");
  std::string seen;
  view_.onEvent([&](const std::string&) { seen = written(); });
  EXPECT_TRUE(queue_.changeAndAnnounce(id(0), [](auto& item) { item.setUrl(L"http://new"); }));
  EXPECT_EQ(log_.lines(), Lines{"view.itemChanged " + std::to_string(id(0))});
  EXPECT_NE(seen.find("http://new"), std::string::npos);
  EXPECT_FALSE(queue_.changeAndAnnounce(0, [](auto&) {}));
  EXPECT_EQ(log_.lines().size(), 1U);
}

TEST_F(SharedQueueTest, TellsNothingOfAnItemThatHasGone) {
  given("A1");
  queue_.announceItem(0);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SharedQueueTest, WritesNothingWithoutAView) {
  given("A1");
  queue_.view().attach(nullptr);
  std::filesystem::remove(file());
  queue_.announceList();
  queue_.announceItem(id(0));
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(SharedQueueTest, WithoutAFolderItKeepsTheQueueInMemoryAlone) {
  SharedQueue inMemory;
  inMemory.open(L"");
  inMemory.view().attach(&view_);
  inMemory.use([](DownloadQueue& queue) { queue.add(queue_text::makeItem("A1")); });
  inMemory.announceList();
  EXPECT_EQ(inMemory.size(), 1U);
  EXPECT_EQ(log_.lines(), Lines{"view.listChanged"});
  EXPECT_FALSE(std::filesystem::exists("/downloadmanager.xml"));
}

TEST_F(SharedQueueTest, ACopyIsIndependentOfTheQueue) {
  given("A1 B4");
  std::unique_ptr<std::vector<SharedQueue::Item*>> copy(queue_.copy());
  queue_.use([](DownloadQueue& queue) { queue.assign({}); });
  EXPECT_EQ(queue_text::textOf(*copy), "A1 B4");
  for (auto* const item : *copy) delete item;
}

}  // namespace
}  // namespace plugin
