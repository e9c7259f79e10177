// A file that is no queue is kept under another name.
#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SetAside : public QueueFileFixture {
 protected:
  const std::string kEmptyQueue = kDeclaration + "<DownloadQueue/>\n";
  static constexpr const char* kFirst = "downloadmanager.xml.unreadable";
  static constexpr const char* kSecond = "downloadmanager.xml.unreadable.2";
  static constexpr const char* kThird = "downloadmanager.xml.unreadable.3";

  /// Reads a file of this content, which the next save must move to the first name.
  void expectSetAside(const std::string& content) const {
    EXPECT_THAT(readOf(content), IsEmpty());
    EXPECT_EQ(this->content(), content);
    EXPECT_FALSE(exists(kFirst));
    EXPECT_EQ(written({}), kEmptyQueue);
    ASSERT_TRUE(exists(kFirst));
    EXPECT_EQ(support::readFile(folder() / kFirst), content);
    std::filesystem::remove(folder() / kFirst);
  }

  void expectReplaced(const std::string& content) const {
    readOf(content);
    written({titled(L"another")});
    EXPECT_NE(this->content(), content);
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
  expectReplaced(text);
  text.replace(text.find("version=\"1\""), 11, "version=\"2\"");
  expectSetAside(text);
  expectSetAside(legacy.document().substr(0, 120));
}

TEST_F(SetAside, AMissingFileIsNot) {
  EXPECT_THAT(read(), IsEmpty());
  written({});
  EXPECT_FALSE(exists(kFirst));
}

TEST_F(SetAside, AFileThatHoldsNothingIsNot) {
  expectReplaced("");
  expectReplaced(written({}));
}

TEST_F(SetAside, AReadableFileIsNot) {
  const std::string text = written({titled(L"one")});
  EXPECT_THAT(read(), ElementsAre(titled(L"one")));
  expectReplaced(text);
  expectReplaced(queueHolding(std::string(100, ' ')));
}

TEST_F(SetAside, AFileThatIsGoneBeforeTheSaveIsNot) {
  readOf("something else");
  std::filesystem::remove(file());
  EXPECT_EQ(written({}), kEmptyQueue);
  EXPECT_FALSE(exists(kFirst));
}

TEST_F(SetAside, AFileThatWasMendedAndReadAgainIsNot) {
  readOf("something else");
  readOf(queueHolding(std::string(100, ' ')));
  written({});
  EXPECT_FALSE(exists(kFirst));
}

TEST_F(SetAside, AnEarlierCopyIsNeverOverwritten) {
  for (const char* content : {"first", "second", "third"}) {
    readOf(content);
    written({});
  }
  EXPECT_EQ(support::readFile(folder() / kFirst), "first");
  EXPECT_EQ(support::readFile(folder() / kSecond), "second");
  EXPECT_EQ(support::readFile(folder() / kThird), "third");
}

TEST_F(SetAside, AFolderOfThatNameIsSkipped) {
  std::filesystem::create_directory(folder() / kFirst);
  readOf("something else");
  written({});
  EXPECT_EQ(support::readFile(folder() / kSecond), "something else");
}

TEST_F(SetAside, ALinkThatLeadsNowhereIsNotOverwritten) {
  std::filesystem::create_symlink("nowhere", folder() / kFirst);
  readOf("something else");
  written({});
  EXPECT_TRUE(std::filesystem::is_symlink(folder() / kFirst));
  EXPECT_FALSE(exists("nowhere"));
  EXPECT_EQ(support::readFile(folder() / kSecond), "something else");
}

}  // namespace
}  // namespace persistence
