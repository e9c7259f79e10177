#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "item/DownloadItem.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/QueueDocument.h"
#include "persistence/QueueText.h"
#include "persistence/XmlText.h"
#include "tests/support/TempDir.h"
#include "tests/unit/persistence/LibraryDocument.h"

namespace persistence {
namespace {

using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;
using Change = std::function<void(VeskPlayerX::DownloadItemInterface&)>;

class QueueTextTest : public testing::Test {
 protected:
  DownloadItem one, two;
  Items both{&one, &two};
  QueueText queue;

  void SetUp() override {
    one.setTitle(L"<eins> & Zürich");
    one.setTicket("t\n\"1\"");
    two.setUrl(L"http://h/two.avi");
  }

  void expectAsTheLibraryWrites(const Items& items) {
    queue.update(items);
    EXPECT_EQ(queue.text(), libraryDocument(items));
  }
};

/// An item that no module has made: it does not count its changes.
class ForeignItem : public DownloadItem {};

TEST_F(QueueTextTest, TheDocumentIsTheLibrarysOwnText) {
  expectAsTheLibraryWrites(both);
  expectAsTheLibraryWrites({&two, &one});
  expectAsTheLibraryWrites({&two});
  expectAsTheLibraryWrites({});
  expectAsTheLibraryWrites(both);
}

TEST_F(QueueTextTest, AQueueThatStaysAsItIsChangesNothing) {
  EXPECT_TRUE(queue.update(both));
  EXPECT_FALSE(queue.update(both));
  one.setTitle(std::wstring(one.getTitle()));
  EXPECT_FALSE(queue.update(both)) << "set to what it was";
  one.setSlotNumber(5);
  one.setLastProgressUpdateTime(5);
  EXPECT_FALSE(queue.update(both)) << "nothing that a file keeps";
}

const std::vector<Change> kChanges = {
    [](auto& item) { item.setTitle(L"new"); },
    [](auto& item) { item.setContentEncryptionUsageId(-1); },
    [](auto& item) { item.setStatus(DownloadStatusFailed); },
    [](auto& item) { item.setSize(5); },
    [](auto& item) { item.setPercentDownloaded(50); },
    [](auto& item) { item.setPath(L"/m/a.avi"); },
    [](auto& item) { item.setTicket("other"); },
    [](auto& item) { item.setTimeRemaining(7); },
    [](auto& item) { item.setContentProviderDisplayName(L"P"); },
    [](auto& item) { item.setEncrypted(true); },
    [](auto& item) { item.setTicketAlreadyTorn(true); },
    [](auto& item) { item.setUrl(L"http://h/new.avi"); },
};

TEST_F(QueueTextTest, AChangeOfAnyFieldIsWritten) {
  queue.update(both);
  for (const Change& change : kChanges) {
    change(one);
    EXPECT_TRUE(queue.update(both));
    EXPECT_EQ(queue.text(), libraryDocument(both));
  }
}

TEST_F(QueueTextTest, AChangeOfOneItemIsWrittenInItsElementAlone) {
  queue.update(both);
  for (const Change& change : kChanges) {
    change(two);
    queue.update(both);
    EXPECT_EQ(queue.change().begin, queue.text().rfind("<DownloadItem "));
    EXPECT_EQ(queue.change().end, queue.text().rfind("</DownloadQueue>"));
  }
}

TEST_F(QueueTextTest, AChangeOfAForeignItemIsWritten) {
  ForeignItem foreign;
  const Items items{&one, &foreign, &two};
  queue.update(items);
  for (const Change& change : kChanges) {
    change(foreign);
    EXPECT_TRUE(queue.update(items));
    EXPECT_EQ(queue.text(), libraryDocument(items));
    EXPECT_FALSE(queue.update(items));
  }
}

TEST_F(QueueTextTest, ItemsOfOneIdKeepTheirOwnFields) {
  DownloadItem copy(&one);
  copy.setTitle(L"a copy");
  expectAsTheLibraryWrites({&one, &copy});
  expectAsTheLibraryWrites({&copy, &one});
}

TEST_F(QueueTextTest, AnItemInThePlaceOfADeletedOneIsWritten) {
  auto item = std::make_unique<DownloadItem>();
  queue.update({&one, item.get()});
  item->~DownloadItem();
  ::new (item.get()) DownloadItem;
  item->setTitle(L"another");
  expectAsTheLibraryWrites({&one, item.get()});
}

TEST_F(QueueTextTest, ATextThatIsTooLongIsCut) {
  one.setTicket(std::string(20'000'000, 'x'));
  queue.update(both);
  const auto back = readQueueDocument(queue.text(), QueueFormat::kCurrent);
  ASSERT_EQ(back.items.size(), 2U);
  EXPECT_EQ(back.items[0]->getTicket().size(), kLongestXmlValue);
  EXPECT_EQ(back.items[1]->getUrl(), two.getUrl());
}

/// Items that are all the same text, too much for one document together.
class Flood : public ForeignItem {
 public:
  Flood() { setTicket(std::string(kLongestXmlValue, '&')); }
};

TEST_F(QueueTextTest, AFloodIsCutOnlyAsLongAsItLasts) {
  Flood flood;
  queue.update(both);
  queue.update(Items(28, &flood));
  EXPECT_GT(queue.text().size(), 28 * kLongestXmlValue / 2);
  EXPECT_LT(queue.text().size(), 29 * kLongestXmlValue / 2);
  expectAsTheLibraryWrites(both);
}

TEST_F(QueueTextTest, AChangeBeforeATextThatMightNotFitIsWritten) {
  DownloadItem big;
  big.setTicket(std::string(kLongestXmlValue, 'x'));
  Items items{&one};
  items.insert(items.end(), 100, &two);
  items.insert(items.end(), 27, &big);  // with one more they would not fit
  queue.update(items);
  one.setTitle(L"new");
  big.setTicket(std::string(kLongestXmlValue, 'x'));
  EXPECT_TRUE(queue.update(items));
  EXPECT_NE(queue.text().find("title=\"new\""), std::string_view::npos);
  EXPECT_FALSE(queue.update(items));
}

/// A queue that changes at random, as an application may change one.
class ChangingQueue {
 public:
  ChangingQueue(unsigned seed, std::size_t size) : random_(seed) {
    while (owned_.size() < size) owned_.push_back(newItem());
  }

  void change(std::size_t mostChanges) {
    for (std::size_t changes = upTo(mostChanges); changes > 0; --changes) changeOnce();
  }

  Items items() const {
    Items items;
    for (const auto& item : owned_) items.push_back(item.get());
    return items;
  }

 private:
  std::size_t upTo(std::size_t most) { return random_() % (most + 1); }
  std::size_t anyIndex() { return upTo(owned_.size() - 1); }
  auto anyPlace() { return owned_.begin() + static_cast<std::ptrdiff_t>(upTo(owned_.size())); }

  std::wstring anyText() {
    static constexpr std::wstring_view kCharacters = L"abc<>&\"'\t\n\r \x01\u00E4\u20AC\U0001F600";
    std::wstring text;
    for (std::size_t length = upTo(12); length > 0; --length) {
      text += kCharacters[upTo(kCharacters.size() - 1)];
    }
    return text;
  }

  void changeOnce() {
    switch (owned_.empty() ? 0 : upTo(6)) {
      case 0:
        owned_.insert(anyPlace(), newItem());
        break;
      case 1:
        owned_.erase(owned_.begin() + static_cast<std::ptrdiff_t>(anyIndex()));
        break;
      case 2:
        std::swap(owned_[anyIndex()], owned_[anyIndex()]);
        break;
      case 3:
        kChanges[upTo(kChanges.size() - 1)](*owned_[anyIndex()]);
        break;
      case 4:
        owned_[anyIndex()]->setPercentDownloaded(static_cast<int>(random_()));
        break;
      default:
        owned_[anyIndex()]->setTitle(anyText());
    }
  }

  std::unique_ptr<DownloadItem> newItem() {
    auto item = upTo(99) == 0 ? std::make_unique<ForeignItem>() : std::make_unique<DownloadItem>();
    item->setUrl(anyText());
    item->setTicket(std::string(upTo(5), static_cast<char>(random_())));
    return item;
  }

  std::mt19937 random_;
  std::vector<std::unique_ptr<DownloadItem>> owned_;
};

/// What an update says of its change: what stands before and behind it was there before.
void expectNoOtherChange(const std::string& before, const QueueText& queue) {
  const auto [begin, end] = queue.change();
  const std::string_view text = queue.text();
  ASSERT_LE(end, text.size());
  ASSERT_EQ(text.substr(0, begin), before.substr(0, begin));
  ASSERT_TRUE(before.ends_with(text.substr(end)));
}

/// Changes a queue in so many steps, each of which is written.
void expectTheLibrarysOwnText(ChangingQueue changing, int steps, std::size_t mostChanges) {
  const support::TempDir folder;
  QueueText queue;
  for (int step = 0; step < steps; ++step) {
    changing.change(mostChanges);
    const std::string before(queue.text());
    const bool isChanged = queue.update(changing.items());
    ASSERT_EQ(queue.text(), libraryDocument(changing.items())) << "step " << step;
    ASSERT_EQ(isChanged, queue.text() != before) << "step " << step;
    expectNoOtherChange(before, queue);
    DownloadManagerPersistence::writeDownloadQueue((folder / "queue.xml").wstring(),
                                                   changing.items());
    ASSERT_EQ(support::readFile(folder / "queue.xml"), queue.text()) << "step " << step;
  }
}

TEST(ChangingQueueText, IsTheLibrarysOwnHoweverAShortQueueChanges) {
  for (unsigned seed = 0; seed < 30; ++seed) {
    SCOPED_TRACE(seed);
    expectTheLibrarysOwnText(ChangingQueue(seed, 3), 200, 3);
  }
}

TEST(ChangingQueueText, IsTheLibrarysOwnHoweverALongQueueChanges) {
  for (unsigned seed = 0; seed < 3; ++seed) {
    SCOPED_TRACE(seed);
    expectTheLibrarysOwnText(ChangingQueue(seed, 1'000), 20, 15);
  }
}

}  // namespace
}  // namespace persistence
