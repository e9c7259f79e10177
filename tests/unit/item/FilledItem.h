#pragma once

#include <gtest/gtest.h>

#include <string>

#include "item/DownloadItem.h"

// Items for the tests of their fields.

inline KPB::DownloadInfo infoTitled(const std::string& title) {
  KPB::DownloadInfo info;
  info.setTitle(title);
  return info;
}

/// Makes an item in which no field has its default.
inline void fill(DownloadItem& item) {
  item.setUID(77);
  item.setStatus(DownloadStatusHeld);
  item.setSize(1ULL << 40);
  item.setPercentDownloaded(42);
  item.setPath(L"/films/a.avi");
  item.setUrl(L"http://h/a.avi");
  item.setTitle(L"Title");
  item.setContentProviderDisplayName(L"Provider");
  item.setTicket(std::string("ti\0cket", 7));
  item.setTicketId(7);
  item.setEncrypted(true);
  item.setTicketAlreadyTorn(true);
  item.setReadyForProgressivePlayback(true);
  item.setAutoProgressivePlayback(true);
  item.setSlotNumber(3);
  item.setTimeRemaining(60);
  item.setLastProgressUpdateTime(100);
  item.setContentEncryptionUsageId(-9);
  item.setDownloadInfo(infoTitled("info"));
}

/// Texts with characters that end, break or do not fit into others: NUL, line feed, one beyond
/// 16 bits.
inline const std::wstring kWideText(L"a\0b\nc\r\U0001F600\x7F ", 9);
inline const std::string kNarrowText("\0\xFF\xC3\n\r ", 6);

inline void setTexts(DownloadItem& item, const std::wstring& wide, const std::string& narrow) {
  item.setPath(wide + L"path");
  item.setUrl(wide + L"url");
  item.setTitle(wide + L"title");
  item.setContentProviderDisplayName(wide + L"provider");
  item.setTicket(narrow);
}

inline void expectTexts(const DownloadItem& item, const std::wstring& wide,
                        const std::string& narrow) {
  EXPECT_EQ(item.getPath(), wide + L"path");
  EXPECT_EQ(item.getUrl(), wide + L"url");
  EXPECT_EQ(item.getTitle(), wide + L"title");
  EXPECT_EQ(item.getContentProviderDisplayName(), wide + L"provider");
  EXPECT_EQ(item.getTicket(), narrow);
}
