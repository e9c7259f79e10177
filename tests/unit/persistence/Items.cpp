#include "tests/unit/persistence/Items.h"

#include <ostream>

#include "item/DownloadItem.h"
#include "kvpm/StringTools.h"

namespace persistence {
namespace {

std::unique_ptr<DownloadItem> itemOf(const Fields& fields) {
  auto item = std::make_unique<DownloadItem>();
  item->setTitle(fields.title);
  item->setContentEncryptionUsageId(fields.contentEncryptionUsageId);
  item->setStatus(static_cast<DownloadStatusEnumType>(fields.status));
  item->setSize(fields.fileSize);
  item->setPercentDownloaded(fields.percentDownloaded);
  item->setPath(fields.filePath);
  item->setTicket(fields.ticket);
  item->setTimeRemaining(fields.timeRemaining);
  item->setContentProviderDisplayName(fields.contentProviderDisplayName);
  item->setEncrypted(fields.encrypted);
  item->setTicketAlreadyTorn(fields.ticketAlreadyTorn);
  item->setUrl(fields.url);
  return item;
}

std::string shown(const std::wstring& text) {
  return '"' + kvpm::StringTools::wStringToString(text.substr(0, 100)) + '"';
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Fields& fields) {
  return out << "title " << shown(fields.title) << " id " << fields.contentEncryptionUsageId
             << " status " << fields.status << " size " << fields.fileSize << " percent "
             << fields.percentDownloaded << " path " << shown(fields.filePath) << " ticket \""
             << fields.ticket.substr(0, 100) << "\" remaining " << fields.timeRemaining
             << " provider " << shown(fields.contentProviderDisplayName) << " encrypted "
             << fields.encrypted << " torn " << fields.ticketAlreadyTorn << " url "
             << shown(fields.url);
}

Queue::Queue(const std::vector<Fields>& fields) {
  for (const Fields& each : fields) {
    owned_.push_back(itemOf(each));
    items_.push_back(owned_.back().get());
  }
}

Fields fieldsOf(const VeskPlayerX::DownloadItemInterface& item) {
  return {item.getTitle(),
          static_cast<std::int32_t>(item.getContentEncryptionUsageId()),
          item.getStatus(),
          item.getSize(),
          item.getPercentDownloaded(),
          item.getPath(),
          item.getTicket(),
          static_cast<std::uint32_t>(item.getTimeRemaining()),
          item.getContentProviderDisplayName(),
          item.getEncrypted(),
          item.getTicketAlreadyTorn(),
          item.getUrl()};
}

std::vector<Fields> takeFields(const std::vector<VeskPlayerX::DownloadItemInterface*>& items) {
  std::vector<Fields> fields;
  for (VeskPlayerX::DownloadItemInterface* item : items) {
    const std::unique_ptr<VeskPlayerX::DownloadItemInterface> owned(item);
    fields.push_back(fieldsOf(*owned));
  }
  return fields;
}

Fields everyFieldSet() {
  return {L"Summer", 42,   3,    123456789012ULL,       37, L"/films/Summer.avi", "ticket text", 95,
          L"Vesk",   true, true, L"http://h/Summer.avi"};
}

Fields titled(const std::wstring& title) {
  Fields fields;
  fields.title = title;
  return fields;
}

}  // namespace persistence
