// Reading an earlier release's file.
#include <climits>

#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using support::LegacyQueueFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class LegacyQueue : public QueueFileFixture {
 protected:
  std::vector<Fields> readOfLegacy(const LegacyQueueFile& legacy) const {
    return readOf(legacy.document());
  }
  Fields itemWith(const std::string& name, const std::string& value) const {
    const auto items = readOfLegacy(LegacyQueueFile().item().attribute(name, value));
    EXPECT_THAT(items, SizeIs(1));
    return items.empty() ? Fields() : items.front();
  }
  /// The items that the reader of this format alone finds in the file.
  std::vector<Fields> readByItsReader() const {
    const kvpm::CritLock lock(DownloadManagerPersistence::persistenceLock);
    return takeFields(DownloadManagerPersistence::readOldQueue(path()));
  }
};

LegacyQueueFile everyAttribute() {
  LegacyQueueFile legacy;
  legacy.item()
      .attribute("contentEncryptionUsageID", "-42")
      .attribute("status", "6")
      .attribute("fileSize", "123456789012")
      .text("title", L"Summer \u00E4\U0001F600")
      .attribute("ticket", "the <ticket> & \"more\" \xC3\xA4\xF0\x9F\x98\x80")
      .text("filePath", L"/films/Summer.vesk")
      .attribute("timeRemaining", "95")
      .text("contentProviderDisplayName", L"Vesk")
      .attribute("encrypted", "true")
      .attribute("ticketAlreadyTorn", "true")
      .text("url", L"http://h/Summer.avi")
      .attribute("percentDownloaded", "37");
  return legacy;
}

Fields everyField() {
  return {L"Summer \u00E4\U0001F600",
          -42,
          6,
          123456789012ULL,
          37,
          L"/films/Summer.vesk",
          "the <ticket> & \"more\" \xC3\xA4\xF0\x9F\x98\x80",
          95,
          L"Vesk",
          true,
          true,
          L"http://h/Summer.avi"};
}

TEST_F(LegacyQueue, BeginsWithTheHeaderByWhichItIsKnown) {
  EXPECT_EQ(LegacyQueueFile().document().substr(0, 86),
            "<drmAuth:DownloadManagerDataContainer xmlns:drmAuth=\"com.vesk.container\" "
            "version=\"1\" >");
}

TEST_F(LegacyQueue, EveryFieldIsImported) {
  EXPECT_THAT(readOfLegacy(everyAttribute()), ElementsAre(everyField()));
}

TEST_F(LegacyQueue, ItemsComeInFileOrder) {
  LegacyQueueFile legacy;
  legacy.item().text("title", L"one").item().text("title", L"two").item().text("title", L"three");
  EXPECT_THAT(readOfLegacy(legacy), ElementsAre(titled(L"one"), titled(L"two"), titled(L"three")));
}

TEST_F(LegacyQueue, AQueueWithoutItemsIsEmpty) {
  EXPECT_THAT(readOfLegacy(LegacyQueueFile()), IsEmpty());
}

TEST_F(LegacyQueue, AbsentAttributesLeaveTheDefaultsAndZeroPercent) {
  EXPECT_THAT(readOfLegacy(LegacyQueueFile().item()), ElementsAre(Fields()));
}

/// An attribute of `everyAttribute`, and what its absence changes.
struct Absence {
  const char* name;
  void (*apply)(Fields& fields);
};

constexpr Absence kAbsences[] = {
    {"contentEncryptionUsageID", [](Fields& fields) { fields.contentEncryptionUsageId = 0; }},
    {"status", [](Fields& fields) { fields.status = 1; }},
    {"fileSize", [](Fields& fields) { fields.fileSize = 0; }},
    {"title", [](Fields& fields) { fields.title.clear(); }},
    {"ticket", [](Fields& fields) { fields.ticket.clear(); }},
    {"filePath", [](Fields& fields) { fields.filePath.clear(); }},
    {"timeRemaining", [](Fields& fields) { fields.timeRemaining = 0; }},
    {"contentProviderDisplayName",
     [](Fields& fields) { fields.contentProviderDisplayName.clear(); }},
    {"encrypted", [](Fields& fields) { fields.encrypted = false; }},
    {"ticketAlreadyTorn", [](Fields& fields) { fields.ticketAlreadyTorn = false; }},
    {"url", [](Fields& fields) { fields.url.clear(); }},
    {"percentDownloaded", [](Fields& fields) { fields.percentDownloaded = 0; }},
};

TEST_F(LegacyQueue, EachAttributeMayBeAbsentAlone) {
  for (const Absence& absence : kAbsences) {
    std::string text = everyAttribute().document();
    const std::size_t at = text.find(" " + std::string(absence.name) + "=\"");
    ASSERT_NE(at, std::string::npos);
    text.insert(at + 1, "another-");
    Fields expected = everyField();
    absence.apply(expected);
    EXPECT_THAT(readOf(text), ElementsAre(expected)) << absence.name;
  }
}

TEST_F(LegacyQueue, EveryStatusIsReadAsStored) {
  for (const std::int32_t status : {0, 1, 2, 3, 4, 5, 6, 7, 99, -1, INT_MIN}) {
    EXPECT_EQ(itemWith("status", std::to_string(status)).status, status);
  }
}

TEST_F(LegacyQueue, UnusualNumbersAreReadAsThePlatformConvertsThem) {
  EXPECT_EQ(itemWith("contentEncryptionUsageID", "18446744073709551615").contentEncryptionUsageId,
            -1);
  EXPECT_EQ(itemWith("timeRemaining", "-1").timeRemaining, UINT_MAX);
  EXPECT_EQ(itemWith("timeRemaining", "4294967297").timeRemaining, 1U);
  EXPECT_EQ(itemWith("fileSize", "18446744073709551615").fileSize, ULLONG_MAX);
  EXPECT_EQ(itemWith("percentDownloaded", "-5").percentDownloaded, -5);
  EXPECT_EQ(itemWith("percentDownloaded", "many").percentDownloaded, 0);
  EXPECT_FALSE(itemWith("encrypted", "no").encrypted);
}

TEST_F(LegacyQueue, AnotherVersionGivesNoItems) {
  const std::string text = everyAttribute().document();
  const std::string header = text.substr(0, 86);
  for (const char* version : {"2", "0", "", "x", "-1"}) {
    const std::string other = "version=\"" + std::string(version) + "\"";
    const std::string root =
        "<drmAuth:DownloadManagerDataContainer xmlns:drmAuth=\"com.vesk.container\" " + other +
        " >";
    put(root + text.substr(header.size()));
    EXPECT_THAT(readByItsReader(), IsEmpty()) << version;
  }
}

TEST_F(LegacyQueue, ARootWithoutAVersionGivesNoItems) {
  put("<DownloadManagerDataContainer><DownloadManagerVideoElement/>"
      "</DownloadManagerDataContainer>");
  EXPECT_THAT(readByItsReader(), IsEmpty());
}

TEST_F(LegacyQueue, OnlyTheLocalPartOfTheRootsNameCounts) {
  put("<DownloadManagerDataContainer version=\" 1.5\"><DownloadManagerVideoElement/>"
      "</DownloadManagerDataContainer>");
  EXPECT_THAT(readByItsReader(), SizeIs(1));
  put("<x:DownloadManagerDataContainer xmlns:x=\"urn:x\" version=\"1\">"
      "<y:DownloadManagerVideoElement xmlns:y=\"urn:y\"/></x:DownloadManagerDataContainer>");
  EXPECT_THAT(readByItsReader(), SizeIs(1));
  put("<DownloadQueue version=\"1\"><DownloadManagerVideoElement/></DownloadQueue>");
  EXPECT_THAT(readByItsReader(), IsEmpty());
}

TEST_F(LegacyQueue, OtherChildrenAreSkipped) {
  LegacyQueueFile legacy;
  legacy
      .raw(
          "text<!-- c --><?DownloadManagerVideoElement title=\"p\"?><drmAuth:Other title=\"x\"/>"
          "<DownloadItem/>")
      .item()
      .text("title", L"one")
      .raw("<DownloadManagerVideoElement/><Other><DownloadManagerVideoElement/></Other>");
  EXPECT_THAT(readOfLegacy(legacy), ElementsAre(titled(L"one"), Fields()));
}

TEST_F(LegacyQueue, AnUnknownLegacyHeaderIsNotRecognised) {
  const std::string text = everyAttribute().document();
  EXPECT_THAT(readOf(kDeclaration + text), IsEmpty());
  EXPECT_THAT(readOf(" " + text), IsEmpty());
}

TEST_F(LegacyQueue, AFileCutAnywhereIsAnEmptyQueue) {
  const std::string text = everyAttribute().document();
  for (std::size_t size = 0; size < text.size(); ++size) {
    ASSERT_THAT(readOf(text.substr(0, size)), IsEmpty()) << "cut at " << size;
    ASSERT_THAT(readByItsReader(), IsEmpty()) << "cut at " << size;
  }
}

TEST_F(LegacyQueue, MissingAndEmptyFilesGiveNoItems) {
  EXPECT_THAT(readByItsReader(), IsEmpty());
  put("");
  EXPECT_THAT(readByItsReader(), IsEmpty());
}

TEST_F(LegacyQueue, AFolderInThePlaceOfTheFileGivesNoItems) {
  std::filesystem::create_directory(file());
  EXPECT_THAT(readByItsReader(), IsEmpty());
}

TEST_F(LegacyQueue, AFileLargerThanTheLibraryCanCountGivesNoItems) {
  put(everyAttribute().document());
  ASSERT_THAT(readByItsReader(), SizeIs(1));
  std::filesystem::resize_file(file(), std::uintmax_t{5} << 30);
  EXPECT_THAT(readByItsReader(), IsEmpty());
  EXPECT_THAT(read(), IsEmpty());
}

TEST_F(LegacyQueue, NothingIsPrinted) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  readOf(LegacyQueueFile().document() + "<\xFF\x01&unknown;");
  readOfLegacy(LegacyQueueFile().item().attribute("title", "++=+").attribute("status", "many"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(LegacyQueue, ATextOfMalformedBase64StillGivesAnItem) {
  EXPECT_EQ(itemWith("title", ""), Fields());
  EXPECT_EQ(itemWith("title", "abc"), Fields());
  EXPECT_EQ(itemWith("title", "++++++++"), titled(std::wstring(1, L'\0')));
}

TEST_F(LegacyQueue, ImportedItemsCanBeSavedWhateverTheirTexts) {
  LegacyQueueFile legacy;
  legacy.item().attribute("title", "________").item().text("title", L"two");
  const auto items = DownloadManagerPersistence::readDownloadQueue([&] {
    put(legacy.document());
    return path();
  }());
  DownloadManagerPersistence::writeDownloadQueue(path(), items);
  takeFields(items);
  EXPECT_THAT(read(), ElementsAre(titled(L"\uFFFD"), titled(L"two")));
}

std::wstring decoded(const std::string& text) {
  return DownloadManagerPersistence::encodedStringToWstring(text.c_str());
}

TEST(EncodedString, HoldsTheCharactersInLittleEndianOrder) {
  EXPECT_EQ(decoded("YQAAAA=="), L"a");
  EXPECT_EQ(decoded("YQAAAGIAAAA="), L"ab");
  EXPECT_EQ(decoded(support::legacyText(L"\u20AC\U0001F600")), L"\u20AC\U0001F600");
}

TEST(EncodedString, DropsAnIncompleteLastCharacter) {
  EXPECT_EQ(decoded("YQAAAGIA"), L"a");
  EXPECT_EQ(decoded("YQAAAGI="), L"a");
  EXPECT_EQ(decoded("YQAA"), L"");
}

TEST(EncodedString, IsEmptyForMalformedBase64) {
  EXPECT_EQ(decoded(""), L"");
  EXPECT_EQ(decoded("YQAAAA="), L"");
}

TEST(EncodedString, IsEmptyForNull) {
  EXPECT_EQ(DownloadManagerPersistence::encodedStringToWstring(nullptr), L"");
}

TEST(EncodedString, KeepsAByteOrderMarkAndAZeroAsCharacters) {
  EXPECT_EQ(decoded("__4AAA=="), L"\uFEFF");
  EXPECT_EQ(decoded("YQAAAAAAAABiAAAA"), std::wstring(L"a\0b", 3));
}

TEST(EncodedString, ReadsBackEveryLength) {
  std::wstring text;
  for (wchar_t c = 0; c < 300; ++c) {
    EXPECT_EQ(decoded(support::legacyText(text)), text);
    text += static_cast<wchar_t>(c * 4001);
  }
}

}  // namespace
}  // namespace persistence
