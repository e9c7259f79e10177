#include "persistence/TicketParser.h"

#include <cstdint>
#include <exception>
#include <limits>
#include <utility>

#include "item/DownloadItem.h"
#include "kvpm/File.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "kvsc/HttpRequest.h"
#include "persistence/ClearTicket.h"
#include "persistence/ItemList.h"
#include "persistence/TicketParserImpl.h"
#include "persistence/URLEscape.h"

namespace {

using kvpm::PathTools;
using kvpm::StringTools;
using persistence::ItemList;

constexpr const wchar_t* kTicketExtension = L".tix";

std::wstring withoutQuotes(const std::wstring& path) {
  return StringTools::stripBeginingAndEndChar(path, L'"');
}

/// The bytes of a file; empty when not all of them can be read or their number exceeds 32 bits.
std::basic_string<unsigned char> bytesOf(const std::wstring& path) {
  const std::uint64_t size = PathTools::getFileSize(path);
  if (size == 0 || size > std::numeric_limits<std::uint32_t>::max()) return {};
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return {};
  std::basic_string<unsigned char> bytes(size, 0);
  if (file.read(bytes.data(), size) != static_cast<std::int64_t>(size)) return {};
  return bytes;
}

std::wstring hostOf(const std::wstring& url) {
  std::string host;
  std::string port;
  std::string path;
  bool isHttps = false;
  kvsc::HttpRequest::parseUri(URLEscape::unescape(StringTools::wStringToString(url)), &host, &port,
                              &path, &isHttps);
  return StringTools::stringToWString(host);
}

/// The item of a film; what the ticket leaves out comes from the address.
std::unique_ptr<DownloadItem> itemFrom(const persistence::TicketFilm& film) {
  auto item = std::make_unique<DownloadItem>();
  item->setStatus(DownloadStatusQueued);
  item->setUrl(film.url);
  item->setTitle(film.title.empty() ? PathTools::getFileName(film.url) : film.title);
  item->setContentProviderDisplayName(film.contentProvider.empty() ? hostOf(film.url)
                                                                   : film.contentProvider);
  return item;
}

ItemList readFilms(const std::wstring& path) {
  ItemList items;
  const std::wstring text = StringTools::uStringToWstring(bytesOf(path));
  for (const persistence::TicketFilm& film : persistence::readClearTicket(text).films) {
    items.push_back(itemFrom(film));
  }
  return items;
}

/// The form in which paths are compared, regardless of case and kind of separator.
std::wstring comparable(const std::wstring& path) {
  return StringTools::replaceString(L"\\", L"/", StringTools::toLower(path));
}

/// Moves the ticket beside the films, then deletes it.
void consumeTicket(const std::wstring& path, const std::wstring& title) {
  const std::wstring target = PathTools::getVeskMoviesFolder() + L"/" + title + kTicketExtension;
  const bool isMoved = comparable(target) != comparable(path) && PathTools::moveFile(path, target);
  PathTools::deleteFile(isMoved ? target : path);
}

std::unique_ptr<DownloadItem> itemFrom(const VeskDrmTicketData& record) {
  auto item = std::make_unique<DownloadItem>();
  item->setContentEncryptionUsageId(record.contentEncryptionUsageId);
  item->setPath(TicketParser::TicketParserImpl::getLocalFilePathFromTicketData(&record));
  item->setSize(0);
  item->setStatus(DownloadStatusQueued);
  item->setTitle(record.title);
  item->setTicket(record.ticket);
  item->setContentProviderDisplayName(record.contentProviderDisplayName);
  item->setTicketAlreadyTorn(false);
  item->setEncrypted(true);
  return item;
}

ItemList readRecords(const std::vector<VeskDrmTicketData*>& records) {
  ItemList items;
  for (const VeskDrmTicketData* record : records) items.push_back(itemFrom(*record));
  return items;
}

/// The items that `read` finds; empty when there is no memory for them.
template <class Read>
TicketParser::Items tryToRead(Read read) {
  try {
    return persistence::release(read());
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

TicketParser::Items TicketParser::parseClearTicket(const std::wstring& path) {
  return tryToRead([&] { return readFilms(withoutQuotes(path)); });
}

TicketParser::Items TicketParser::processEncryptedTicket(std::vector<VeskDrmTicketData*> records,
                                                         std::wstring ticketPath) {
  std::erase(records, nullptr);
  Items items = tryToRead([&] { return readRecords(records); });
  if (items.empty()) return items;
  try {
    consumeTicket(withoutQuotes(ticketPath), records.front()->title);
  } catch (const std::exception&) {
    // Memory ran out: the ticket stays, but the items are complete.
  }
  return items;
}
