#include <gmock/gmock.h>

#include <string>

#include "persistence/XmlGuard.h"
#include "tests/unit/persistence/Repeated.h"

namespace persistence {
namespace {

std::string elementWith(int attributes, const std::string& value = "''") {
  std::string element = "<a";
  for (int i = 0; i < attributes; ++i) element += " a" + std::to_string(i) + "=" + value;
  return element + "/>";
}

/// Whether the library may read these bytes, however they are cut.
bool isHarmlessXml(const std::string& bytes) {
  const bool isHarmless = XmlGuard().take(bytes);
  for (const std::size_t size : {1U, 2U, 3U, 7U, 100U, 65'536U}) {
    XmlGuard guard;
    bool isHarmlessInPieces = true;
    for (std::size_t at = 0; at < bytes.size() && isHarmlessInPieces; at += size) {
      isHarmlessInPieces = guard.take(std::string_view(bytes).substr(at, size));
    }
    EXPECT_EQ(isHarmless, isHarmlessInPieces) << "in pieces of " << size;
  }
  return isHarmless;
}

TEST(XmlGuard, OrdinaryDocumentsAreHarmless) {
  EXPECT_TRUE(isHarmlessXml(""));
  EXPECT_TRUE(isHarmlessXml("no markup at all"));
  EXPECT_TRUE(isHarmlessXml("<DownloadQueue><DownloadItem title=\"a\"/></DownloadQueue>"));
  EXPECT_TRUE(isHarmlessXml("<a b=''/"));
  EXPECT_TRUE(isHarmlessXml("<a b='"));
  EXPECT_TRUE(isHarmlessXml("<a b="));
  EXPECT_TRUE(isHarmlessXml("<"));
}

TEST(XmlGuard, AnElementOfManyAttributesIsHarmless) {
  EXPECT_TRUE(isHarmlessXml(elementWith(65)));
  EXPECT_TRUE(isHarmlessXml(elementWith(10'000)));
}

TEST(XmlGuard, AnElementOfVeryManyAttributesIsNot) {
  EXPECT_FALSE(isHarmlessXml(elementWith(100'000)));
  EXPECT_FALSE(isHarmlessXml("<b/>" + elementWith(100'000) + "<b/>"));
  EXPECT_FALSE(isHarmlessXml(elementWith(100'000, " \t\r\n\"x\"")));
}

TEST(XmlGuard, ElementsAddUp) {
  EXPECT_TRUE(isHarmlessXml(repeated(elementWith(10'000), 30)));
  EXPECT_FALSE(isHarmlessXml(repeated(elementWith(10'000), 50)));
}

TEST(XmlGuard, TextAfterATagIsNotCounted) {
  const std::string text = repeated(" a='b'", 100'000);
  EXPECT_TRUE(isHarmlessXml("<a>" + text + "</a>"));
  EXPECT_TRUE(isHarmlessXml("<a b = \">\" c='>'/>" + text + "<a/>"));
  EXPECT_TRUE(isHarmlessXml("<a><!-- > -->" + text + "</a>"));
  EXPECT_FALSE(isHarmlessXml("<a b='>'" + text + "/>"));
  EXPECT_FALSE(isHarmlessXml("<a b='>' c=\">\"" + text));
}

TEST(XmlGuard, TheContentOfValuesIsNotCounted) {
  EXPECT_TRUE(isHarmlessXml("<a b=\"" + elementWith(100'000).substr(1) + "\"/>"));
  EXPECT_TRUE(isHarmlessXml("<a b=\"" + repeated("='", 100'000) + "\"/>"));
}

}  // namespace
}  // namespace persistence
