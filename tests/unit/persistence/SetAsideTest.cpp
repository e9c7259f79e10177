// A file that is no queue is kept under another name.
#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SetAside : public QueueFileFixture {
 protected:
  static constexpr const char* kFirst = "downloadmanager.xml.unreadable";
  static constexpr const char* kSecond = "downloadmanager.xml.unreadable.2";
  static constexpr const char* kThird = "downloadmanager.xml.unreadable.3";

  /// Loads a file of this content, which must then lie under the first name.
  void expectSetAside(const std::string& content) const {
    put(content);
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_FALSE(exists("downloadmanager.xml"));
    ASSERT_TRUE(exists(kFirst));
    EXPECT_EQ(support::readFile(folder() / kFirst), content);
    std::filesystem::remove(folder() / kFirst);
  }

  void expectLeftInPlace(const std::string& content) const {
    put(content);
    load();
    EXPECT_EQ(this->content(), content);
    EXPECT_FALSE(exists(kFirst));
  }
};

TEST_F(SetAside, AnUnrecognisedFileIs) {
  expectSetAside("x");
  expectSetAside("something else, long enough to be looked at as a queue: " +
                 std::string(100, '.'));
  expectSetAside("\xEF\xBB\xBF" + queueHolding("<DownloadItem title=\"one\"/>"));
  expectSetAside(std::string(500, '\0'));
}

TEST_F(SetAside, AMalformedFileIs) {
  const std::string text = written({titled(L"one"), titled(L"two")});
  expectSetAside(text.substr(0, text.size() / 2));
  expectSetAside(text.substr(0, text.size() - 2));
  expectSetAside(text + text);
}

TEST_F(SetAside, AFileOfAnotherRootIs) {
  expectSetAside(kDeclaration + "<Films>" + std::string(100, ' ') + "</Films>");
}

TEST_F(SetAside, AFileTooShortToBeRecognisedIs) {
  expectSetAside(queueHolding("<DownloadItem/>").substr(0, 85));
}

TEST_F(SetAside, AFileWithAnEntityDeclarationIs) {
  expectSetAside(kDeclaration + "<!DOCTYPE DownloadQueue [<!ENTITY a \"b\">]>" +
                 queueHolding("<DownloadItem title=\"one\"/>").substr(kDeclaration.size()));
}

TEST_F(SetAside, ALegacyFileOfAnotherVersionIs) {
  support::LegacyQueueFile legacy;
  legacy.item().text("title", L"one");
  std::string text = legacy.document();
  expectLeftInPlace(text);
  text.replace(text.find("version=\"1\""), 11, "version=\"2\"");
  expectSetAside(text);
  expectSetAside(legacy.document().substr(0, 120));
}

TEST_F(SetAside, AMissingFileIsNot) {
  EXPECT_THAT(load(), IsEmpty());
  EXPECT_FALSE(exists(kFirst));
}

TEST_F(SetAside, AFileThatHoldsNothingIsNot) {
  expectLeftInPlace("");
  expectLeftInPlace(written({}));
}

TEST_F(SetAside, AReadableFileIsNot) {
  const std::string text = written({titled(L"one")});
  EXPECT_THAT(load(), ElementsAre(titled(L"one")));
  expectLeftInPlace(text);
  expectLeftInPlace(queueHolding(std::string(100, ' ')));
}

TEST_F(SetAside, ReadingAloneMovesNothing) {
  put("something else");
  EXPECT_THAT(read(), IsEmpty());
  EXPECT_EQ(content(), "something else");
}

TEST_F(SetAside, AnEarlierCopyIsNeverOverwritten) {
  for (const char* content : {"first", "second", "third"}) {
    put(content);
    load();
    written({});
  }
  EXPECT_EQ(support::readFile(folder() / kFirst), "first");
  EXPECT_EQ(support::readFile(folder() / kSecond), "second");
  EXPECT_EQ(support::readFile(folder() / kThird), "third");
}

TEST_F(SetAside, AFolderOfThatNameIsSkipped) {
  std::filesystem::create_directory(folder() / kFirst);
  put("something else");
  load();
  EXPECT_EQ(support::readFile(folder() / kSecond), "something else");
}

TEST_F(SetAside, ALinkThatLeadsNowhereIsNotOverwritten) {
  std::filesystem::create_symlink("nowhere", folder() / kFirst);
  put("something else");
  load();
  EXPECT_TRUE(std::filesystem::is_symlink(folder() / kFirst));
  EXPECT_FALSE(exists("nowhere"));
  EXPECT_EQ(support::readFile(folder() / kSecond), "something else");
}

}  // namespace
}  // namespace persistence
