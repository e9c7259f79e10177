// Documents made to cost memory, time or secrets.
#include "persistence/QueueDocument.h"
#include "tests/unit/persistence/QueueFileFixture.h"
#include "tests/unit/persistence/Repeated.h"

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class HostileXml : public QueueFileFixture {};

std::string withDocumentType(const std::string& declarations, const std::string& inside) {
  return kDeclaration + "<!DOCTYPE DownloadQueue [" + declarations + "]>\n<DownloadQueue>" +
         inside + "</DownloadQueue>\n";
}

TEST_F(HostileXml, NestedEntitiesAreRefused) {
  std::string declarations = "<!ENTITY l0 \"ha\">";
  for (int level = 1; level < 10; ++level) {
    const std::string inner = "&l" + std::to_string(level - 1) + ";";
    declarations += "<!ENTITY l" + std::to_string(level) + " \"" + repeated(inner, 10) + "\">";
  }
  EXPECT_THAT(readOf(withDocumentType(declarations, "<DownloadItem title=\"&l9;\"/>")), IsEmpty());
  EXPECT_THAT(readOf(withDocumentType(declarations, "&l9;<DownloadItem/>")), IsEmpty());
}

TEST_F(HostileXml, ALongEntityUsedOftenIsRefused) {
  const std::string declaration = "<!ENTITY a \"" + std::string(100'000, 'x') + "\">";
  const std::string item = "<DownloadItem title=\"" + repeated("&a;", 3'000) + "\"/>";
  EXPECT_THAT(readOf(withDocumentType(declaration, item)), IsEmpty());
}

TEST_F(HostileXml, LongDefaultValuesAreRefused) {
  const std::string declaration =
      "<!ATTLIST DownloadItem title CDATA \"" + std::string(100'000, 'x') + "\">";
  EXPECT_THAT(readOf(withDocumentType(declaration, repeated("<DownloadItem/>", 50'000))),
              IsEmpty());
}

TEST_F(HostileXml, EveryKindOfEntityDeclarationIsRefused) {
  for (const char* declaration :
       {"<!ENTITY a 'b'>", "<!ENTITY % a 'b'>", "<!ENTITY a SYSTEM 'b'>",
        "<!NOTATION n SYSTEM 'n'><!ENTITY a SYSTEM 'b' NDATA n>", "<!ENTITY lt '&#38;#60;'>"}) {
    EXPECT_THAT(readOf(withDocumentType(declaration, "<DownloadItem title=\"one\"/>")), IsEmpty())
        << declaration;
  }
}

TEST_F(HostileXml, ADocumentTypeWithoutEntitiesIsRead) {
  const std::string item = "<DownloadItem title=\"one\"/>";
  EXPECT_THAT(readOf(withDocumentType("", item)), ElementsAre(titled(L"one")));
  EXPECT_THAT(readOf(withDocumentType("<!ELEMENT DownloadItem EMPTY>", item)),
              ElementsAre(titled(L"one")));
  EXPECT_THAT(
      readOf(kDeclaration + "<!DOCTYPE DownloadQueue><DownloadQueue>" + item + "</DownloadQueue>"),
      ElementsAre(titled(L"one")));
}

TEST_F(HostileXml, ADocumentTypeOfAnotherFileIsRead) {
  const auto other = folder().write("queue.dtd", "<!ENTITY e 'the secret'>");
  const std::string type = "<!DOCTYPE DownloadQueue SYSTEM \"" + other.string() + "\">";
  EXPECT_THAT(readOf(kDeclaration + type +
                     "<DownloadQueue><DownloadItem title=\"one\"/>"
                     "</DownloadQueue>"),
              ElementsAre(titled(L"one")));
}

TEST_F(HostileXml, ADocumentTypeInACommentOrATextIsRead) {
  EXPECT_THAT(readOf(queueHolding("<!-- <!DOCTYPE a [<!ENTITY b 'c'>]> -->"
                                  "<![CDATA[<!DOCTYPE a>]]><DownloadItem title=\"one\"/>")),
              ElementsAre(titled(L"one")));
}

TEST_F(HostileXml, ShortDefaultValuesAreRead) {
  EXPECT_THAT(readOf(withDocumentType("<!ATTLIST DownloadItem title CDATA \"one\">",
                                      "<DownloadItem/><DownloadItem title=\"two\"/>")),
              ElementsAre(titled(L"one"), titled(L"two")));
}

TEST_F(HostileXml, NoOtherFileIsRead) {
  const auto secret = folder().write("secret.txt", "the secret");
  const std::string declaration = "<!ENTITY e SYSTEM \"file://" + secret.string() + "\">";
  EXPECT_THAT(readOf(withDocumentType(declaration, "<DownloadItem title=\"&e;\"/>")), IsEmpty());
  EXPECT_THAT(readOf(withDocumentType(declaration, "&e;<DownloadItem title=\"one\"/>")), IsEmpty());
}

std::string itemWithUnknownAttributes(int count) {
  std::string item = "<DownloadItem";
  for (int i = 0; i < count; ++i) item += " a" + std::to_string(i) + "=''";
  return item + " title=\"one\"/>";
}

TEST_F(HostileXml, AnElementWithAThousandUnknownAttributesIsRead) {
  EXPECT_THAT(readOf(queueHolding(itemWithUnknownAttributes(1'000))), ElementsAre(titled(L"one")));
}

TEST_F(HostileXml, AnElementWithAHundredThousandAttributesIsRefused) {
  EXPECT_THAT(readOf(queueHolding(itemWithUnknownAttributes(100'000))), IsEmpty());
}

TEST_F(HostileXml, ElementsNestedVeryDeepAreRefused) {
  EXPECT_THAT(readOf(queueHolding(repeated("<a>", 100'000) + repeated("</a>", 100'000))),
              IsEmpty());
}

TEST_F(HostileXml, AQueueOfAHundredThousandItemsIsRead) {
  EXPECT_THAT(readOf(queueHolding(repeated("<DownloadItem title=\"a\"/>", 100'000))),
              SizeIs(100'000));
}

TEST_F(HostileXml, AHundredMegabytesOfBlanksAreNotAQueue) {
  EXPECT_THAT(readOf(kDeclaration + std::string(100'000'000, ' ')), IsEmpty());
}

TEST_F(HostileXml, AFileLargerThanTheLibraryCanCountIsNotRead) {
  put(queueHolding("<DownloadItem title=\"one\"/>" + std::string(100, ' ')));
  ASSERT_THAT(read(), ElementsAre(titled(L"one")));
  std::filesystem::resize_file(file(), std::uintmax_t{5} << 30);
  EXPECT_THAT(read(), IsEmpty());
}

TEST(XmlSource, ADocumentThatCannotBeReadToItsEndIsUnavailable) {
  const std::string document = queueHolding(repeated("<DownloadItem title=\"a\"/>", 3));
  ASSERT_THAT(readQueueDocument(document, QueueFormat::kCurrent).items, SizeIs(3));
  for (std::size_t readable = 0; readable <= document.size(); ++readable) {
    const XmlSource bytes = sourceOf(std::string_view(document).substr(0, readable));
    const auto failing = [&bytes](char* buffer, std::size_t size) {
      const std::int64_t got = bytes(buffer, std::min<std::size_t>(size, 10));
      return got == 0 ? -1 : got;
    };
    const QueueReading reading = readQueueDocument(failing, QueueFormat::kCurrent);
    ASSERT_EQ(reading.outcome, QueueOutcome::kUnavailable) << readable;
    ASSERT_THAT(reading.items, IsEmpty()) << readable;
  }
}

TEST(XmlSource, ADocumentIsReadInPiecesOfAnySize) {
  const std::string document = queueHolding(repeated("<DownloadItem title=\"\xC3\xA4\"/>", 3));
  for (const std::size_t piece : {1U, 2U, 3U, 100U}) {
    const XmlSource bytes = sourceOf(document);
    const QueueReading reading = readQueueDocument(
        [&](char* buffer, std::size_t size) { return bytes(buffer, std::min(size, piece)); },
        QueueFormat::kCurrent);
    EXPECT_EQ(reading.outcome, QueueOutcome::kRead);
    ASSERT_THAT(reading.items, SizeIs(3));
    EXPECT_EQ(reading.items[2]->getTitle(), L"\u00E4");
  }
}

}  // namespace
}  // namespace persistence
