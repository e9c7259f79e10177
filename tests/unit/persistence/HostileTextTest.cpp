// Items whose texts XML cannot carry, or only with escapes.
#include <algorithm>
#include <memory>

#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using testing::ElementsAre;

class HostileText : public QueueFileFixture {
 protected:
  /// The title as it is read back; the items around it must be unchanged.
  std::wstring titleReadBack(const std::wstring& title) const {
    const auto items = writtenAndReadBack({titled(L"before"), titled(title), titled(L"after")});
    EXPECT_EQ(items.size(), 3U);
    if (items.size() != 3) return L"(unreadable)";
    EXPECT_EQ(items[0], titled(L"before"));
    EXPECT_EQ(items[2], titled(L"after"));
    return items[1].title;
  }

  std::string ticketReadBack(const std::string& ticket) const {
    Fields item;
    item.ticket = ticket;
    const auto items = writtenAndReadBack({titled(L"before"), item, titled(L"after")});
    EXPECT_EQ(items.size(), 3U);
    return items.size() == 3 ? items[1].ticket : "(unreadable)";
  }
};

bool isXmlCharacter(std::uint32_t c) {
  return c == 9 || c == 10 || c == 13 || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

std::wstring charactersFrom(std::uint32_t first, std::uint32_t last) {
  std::wstring text;
  for (std::uint32_t c = first; c <= last; ++c) text += static_cast<wchar_t>(c);
  return text;
}

std::wstring withReplacements(std::wstring text) {
  for (wchar_t& c : text) {
    if (!isXmlCharacter(static_cast<std::uint32_t>(c))) c = L'\uFFFD';
  }
  return text;
}

TEST_F(HostileText, AllOfUnicodeComesBackWithReplacementsForWhatXmlCannotCarry) {
  const std::wstring everything = charactersFrom(0, 0x10FFFF);
  EXPECT_EQ(titleReadBack(everything), withReplacements(everything));
}

TEST_F(HostileText, ValuesBeyondUnicodeAreReplaced) {
  const std::wstring beyond = charactersFrom(0x110000, 0x110010) + static_cast<wchar_t>(-1) +
                              static_cast<wchar_t>(0x80000000U);
  EXPECT_EQ(titleReadBack(beyond), std::wstring(beyond.size(), L'\uFFFD'));
}

TEST_F(HostileText, EachControlCharacterAloneComesBackOrIsReplaced) {
  for (std::uint32_t c = 0; c < 0x20; ++c) {
    const std::wstring text(1, static_cast<wchar_t>(c));
    ASSERT_EQ(titleReadBack(text), withReplacements(text)) << c;
  }
}

TEST_F(HostileText, ANulDoesNotEndTheText) {
  EXPECT_EQ(titleReadBack(std::wstring(L"a\0b", 3)), L"a\uFFFDb");
}

TEST_F(HostileText, MarkupComesBackAsText) {
  for (const wchar_t* text : {L"\"/><DownloadItem title=\"x", L"</DownloadQueue>", L"<!-- ", L"]]>",
                              L"&amp;&#10;&#x0;&unknown;", L"<![CDATA[", L"'\"'\"", L"<?xml?>"}) {
    EXPECT_EQ(titleReadBack(text), text);
  }
}

TEST_F(HostileText, BlanksAreKeptEverywhere) {
  for (const wchar_t* text :
       {L" ", L"  a  b  ", L"\t\ta\t\t", L"\r\n\r\n", L"\na\r", L" \n\t\r "}) {
    EXPECT_EQ(titleReadBack(text), text);
    const std::string ticket(text, text + std::char_traits<wchar_t>::length(text));
    EXPECT_EQ(ticketReadBack(ticket), ticket);
  }
}

TEST_F(HostileText, EveryWideFieldGetsReplacements) {
  Fields item;
  item.title = item.filePath = item.contentProviderDisplayName = item.url = L"\x01\"<\xD800";
  Fields expected;
  expected.title = expected.filePath = expected.contentProviderDisplayName = expected.url =
      L"\uFFFD\"<\uFFFD";
  EXPECT_THAT(writtenAndReadBack({item}), ElementsAre(expected));
}

TEST_F(HostileText, ATicketOfAllCharactersIsCarriedByteForByte) {
  std::string ticket;
  for (std::uint32_t c = 1; c <= 0x10FFFF; ++c) {
    if (!isXmlCharacter(c)) continue;
    const std::unique_ptr<unsigned char[]> bytes(
        DownloadManagerPersistence::wstringToUtf8(std::wstring(1, static_cast<wchar_t>(c))));
    ticket += reinterpret_cast<const char*>(bytes.get());
  }
  EXPECT_EQ(ticketReadBack(ticket), ticket);
}

TEST_F(HostileText, EachByteOfATicketComesBackOrIsReplaced) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string ticket = std::string("<") + static_cast<char>(byte) + ">";
    const bool carried = byte < 0x80 && isXmlCharacter(static_cast<std::uint32_t>(byte));
    ASSERT_EQ(ticketReadBack(ticket), carried ? ticket : "<\xEF\xBF\xBD>") << byte;
  }
}

TEST_F(HostileText, ATicketOfAllBytesLeavesTheOtherItemsReadable) {
  std::string ticket;
  for (int byte = 0; byte < 256; ++byte) ticket += static_cast<char>(byte);
  for (int times = 0; times < 3; ++times) {
    ticketReadBack(ticket);
    std::reverse(ticket.begin(), ticket.end());
    ticket += ticket;
  }
}

TEST_F(HostileText, ATicketWithReplacementsIsNotChangedAgain) {
  const std::string once = ticketReadBack("a\xFF\xC3(\xED\xA0\x80\x01z");
  EXPECT_EQ(ticketReadBack(once), once);
}

TEST_F(HostileText, TextsOfTheGreatestLengthComeBackWhole) {
  EXPECT_EQ(titleReadBack(std::wstring(9'000'000, L'a')), std::wstring(9'000'000, L'a'));
  const std::string ampersands(1'800'000, '&');
  EXPECT_EQ(ticketReadBack(ampersands), ampersands);
  const std::wstring wide(2'250'000, L'\U0001F600');
  EXPECT_EQ(titleReadBack(wide), wide);
}

TEST_F(HostileText, LongerTextsAreCutBetweenCharacters) {
  EXPECT_EQ(titleReadBack(std::wstring(12'000'000, L'a')), std::wstring(9'000'000, L'a'));
  EXPECT_EQ(ticketReadBack(std::string(12'000'000, '&')), std::string(1'800'000, '&'));
  EXPECT_EQ(titleReadBack(L"a" + std::wstring(3'000'000, L'\U0001F600')),
            L"a" + std::wstring(2'249'999, L'\U0001F600'));
}

TEST_F(HostileText, ManyLongTextsAreReadWhereverTheyAre) {
  Fields item = titled(std::wstring(1'000'000, L'\n'));
  item.ticket = std::string(6'000'000, 't');
  for (const std::size_t last : {0, 249, 250, 499, 500, 4'000'000}) {
    const std::vector<Fields> queue{item, titled(std::wstring(last, L'z'))};
    ASSERT_EQ(writtenAndReadBack(queue), queue) << last;
  }
}

}  // namespace
}  // namespace persistence
