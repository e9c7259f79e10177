#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "persistence/XmlText.h"
#include "tests/soak/Count.h"
#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

/// What a field holds once it was written and read.
Fields carried(Fields item) {
  for (std::wstring* const text :
       {&item.title, &item.filePath, &item.contentProviderDisplayName, &item.url}) {
    *text = carriedByXml(*text);
  }
  item.ticket = carriedByXml(item.ticket);
  return item;
}

/// Texts of characters and bytes that are likely to make trouble.
class HostileItems {
 public:
  Fields next() {
    Fields item;
    item.title = wide();
    item.filePath = wide();
    item.contentProviderDisplayName = wide();
    item.url = wide();
    for (auto left = random_() % 40; left > 0; --left) item.ticket += byte();
    return item;
  }

 private:
  wchar_t character() {
    static const std::wstring dangerous = L"<>&\"'\t\r\n;#]!-?\0\x7F\x85\x2028\xFFFD\U0001F600";
    switch (random_() % 6) {
      case 0:
        return static_cast<wchar_t>(0xD800 + random_() % 0x800);  // half of a pair
      case 1:
        return static_cast<wchar_t>(0xFFFE + random_() % 2 + 0x10000 * (random_() % 17));
      case 2:
        return static_cast<wchar_t>(random_());
      case 3:
        return static_cast<wchar_t>(random_() % 0x110000);
      default:
        return dangerous[random_() % dangerous.size()];
    }
  }

  std::wstring wide() {
    std::wstring text;
    for (auto left = random_() % 20; left > 0; --left) text += character();
    return text;
  }

  // Beginnings and continuations of sequences come by themselves and together.
  char byte() {
    static const std::string troubling = "<&\"\xC0\xAF\xED\xA0\x80\xF4\x90\xEF\xBF\xBE\xF8\xFF\x80";
    return random_() % 2 == 0 ? troubling[random_() % troubling.size()]
                              : static_cast<char>(random_());
  }

  std::mt19937 random_{std::random_device{}()};
};

class Text : public QueueFileFixture {
 protected:
  static std::vector<Fields> threeItems() {
    Fields film = titled(L"Zürich & \"Rom\"");
    film.url = L"http://films.example/a.avi";
    film.fileSize = 1'000;
    Fields sealed = titled(L"sealed");
    sealed.ticket = "opaque <text>";
    sealed.encrypted = true;
    return {film, sealed, titled(L"last")};
  }

  static std::string legacyContent() {
    support::LegacyQueueFile legacy;
    for (const wchar_t* const title : {L"Zürich", L"sealed", L"last"}) {
      legacy.item().text("title", title).attribute("status", "1").attribute("fileSize", "1000");
    }
    return legacy.document();
  }

  /// Whether the next save moves a file to the name of those that cannot be read, as it was.
  bool isSetAside(const std::string& content) const {
    return this->content() == content && written({}) != content &&
           support::readFile(file().string() + ".unreadable") == content;
  }

  std::vector<Fields> loadOf(const std::string& content) const {
    std::filesystem::remove(file().string() + ".unreadable");
    return readOf(content);
  }

  void expectEveryPrefixWholeOrRefused(const std::string& content) const {
    const std::vector<Fields> whole = readOf(content);
    ASSERT_EQ(whole.size(), 3U);
    for (std::size_t length = 1; length <= content.size(); ++length) {
      const std::string prefix = content.substr(0, length);
      const std::vector<Fields> loaded = loadOf(prefix);
      if (loaded == whole) continue;
      ASSERT_EQ(loaded.size(), 0U) << length;
      ASSERT_TRUE(isSetAside(prefix)) << length;
    }
  }

  /// A flipped bit costs at most the item that it lies in.
  void expectEveryFlipToSpareTheOthers(const std::string& content) const {
    const std::vector<Fields> whole = readOf(content);
    const std::size_t step = soak::isLong() ? 1 : 13;
    for (std::size_t bit = 0; bit < content.size() * 8; bit += step) {
      std::string flipped = content;
      flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
      const std::vector<Fields> loaded = loadOf(flipped);
      if (loaded.empty()) {
        ASSERT_TRUE(isSetAside(flipped)) << bit;
        continue;
      }
      const auto isIntact = [&](const Fields& item) {
        return testing::Value(loaded, testing::Contains(item));
      };
      ASSERT_GE(std::count_if(whole.begin(), whole.end(), isIntact), 2) << bit << '\n' << flipped;
      ASSERT_LE(loaded.size(), whole.size()) << bit;
    }
  }

  template <class Field>
  void expectLengthCarried(Field field, std::size_t length) {
    constexpr std::size_t kMost = 9'000'000;
    Fields item;
    (item.*field).assign(length, 'x');
    const auto back = writtenAndReadBack({titled(L"before"), item, titled(L"after")});
    ASSERT_EQ(back.size(), 3U);
    EXPECT_EQ((back[1].*field).size(), std::min(length, kMost));
    EXPECT_EQ(back[2], titled(L"after"));
  }
};

TEST_F(Text, OfRandomItemsComesBackItemByItem) {
  constexpr int kBatch = 1'000;
  HostileItems hostile;
  for (int left = soak::countOr(3'000); left > 0; left -= kBatch) {
    std::vector<Fields> queue, expected;
    for (int i = 0; i < kBatch; ++i) {
      queue.push_back(hostile.next());
      expected.push_back(carried(queue.back()));
    }
    ASSERT_EQ(writtenAndReadBack(queue), expected);
  }
}

TEST_F(Text, OfAnyLengthComesBackInEveryField) {
  for (const std::size_t length :
       {65'535U, 65'536U, 65'537U, soak::isLong() ? 11'000'000U : 99'999U}) {
    expectLengthCarried(&Fields::title, length);
    expectLengthCarried(&Fields::filePath, length);
    expectLengthCarried(&Fields::contentProviderDisplayName, length);
    expectLengthCarried(&Fields::url, length);
    expectLengthCarried(&Fields::ticket, length);
  }
}

TEST_F(Text, OfEveryPrefixOfAQueueFileIsReadWholeOrSetAside) {
  expectEveryPrefixWholeOrRefused(written(threeItems()));
}

TEST_F(Text, OfEveryPrefixOfAnEarlierFileIsReadWholeOrSetAside) {
  expectEveryPrefixWholeOrRefused(legacyContent());
}

TEST_F(Text, OfAQueueFileWithAFlippedBitLosesNoItemButOne) {
  expectEveryFlipToSpareTheOthers(written(threeItems()));
}

TEST_F(Text, OfAnEarlierFileWithAFlippedBitLosesNoItemButOne) {
  expectEveryFlipToSpareTheOthers(legacyContent());
}

}  // namespace
}  // namespace persistence
