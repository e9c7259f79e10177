#pragma once

#include <cstdint>
#include <string>

#include "KPB/DownloadInfo.h"
#include "VeskPlayerX/DownloadStatus.h"

namespace VeskPlayerX {

/// One entry of the download queue.
///
/// An item of the live queue may be changed at any time by the download manager's threads; a copy
/// from `DownloadManagerInterface::getCopyofQueue` belongs to its owner alone and is what a view
/// shows. References returned by getters live until the next setter or the end of the item. Fields
/// declared `long` hold 32 bits. The order of the virtual operations is part of the interface.
class DownloadItemInterface {
 public:
  DownloadItemInterface() = default;
  DownloadItemInterface(const DownloadItemInterface&) = delete;
  DownloadItemInterface& operator=(const DownloadItemInterface&) = delete;
  virtual ~DownloadItemInterface() = default;

  /// Key of the session in the download library; 0 for none.
  virtual unsigned long long getUID() const = 0;
  virtual void setUID(unsigned long long uid) = 0;

  /// The queue's handle of the item, from 1 on, valid within one run of the player.
  virtual unsigned int getId() const = 0;
  virtual void setId(unsigned int id) = 0;

  /// Local path of the film; empty until one is chosen.
  virtual const std::wstring& getPath() const = 0;
  virtual void setPath(const std::wstring& path) = 0;

  /// Address of the film; empty for a rights-protected item that has not been authorised.
  virtual const std::wstring& getUrl() const = 0;
  virtual void setUrl(const std::wstring& url) = 0;

  /// Bytes of the whole film; 0 until known.
  virtual unsigned long long getSize() const = 0;
  virtual void setSize(unsigned long long size) = 0;

  /// 0..100.
  virtual int getPercentDownloaded() const = 0;
  virtual void setPercentDownloaded(int percent) = 0;

  /// Display title.
  virtual const std::wstring& getTitle() const = 0;
  virtual void setTitle(const std::wstring& title) = 0;

  /// State. A completed item keeps its state whatever is set.
  virtual DownloadStatusEnumType getStatus() const = 0;
  virtual void setStatus(DownloadStatusEnumType status) = 0;

  /// Display name of the content's provider.
  virtual std::wstring getContentProviderDisplayName() const = 0;
  virtual void setContentProviderDisplayName(const std::wstring& name) = 0;

  /// Identifies rights-protected content; 0 for none.
  virtual long getContentEncryptionUsageId() const = 0;
  virtual void setContentEncryptionUsageId(long id) = 0;

  /// The ticket that the item was made from, as opaque bytes; empty for none.
  virtual const std::string& getTicket() const = 0;
  virtual void setTicket(const std::string& ticket) = 0;

  /// Id of the ticket at the online services; above 0: the download must be confirmed.
  virtual long getTicketId() const = 0;
  virtual void setTicketId(long id) = 0;

  /// Whether the online services know that the ticket was used.
  virtual bool getTicketAlreadyTorn() const = 0;
  virtual void setTicketAlreadyTorn(bool torn) = 0;

  /// Whether the item is rights-protected.
  virtual bool getEncrypted() const = 0;
  virtual void setEncrypted(bool encrypted) = 0;

  /// Slot given by the user; -1 for none.
  virtual int getSlotNumber() const = 0;
  virtual void setSlotNumber(int slot) = 0;

  /// Whether playback may begin before the whole film is there.
  virtual bool getReadyForProgressivePlayback() const = 0;
  virtual void setReadyForProgressivePlayback(bool ready) = 0;

  /// Whether playback begins by itself once enough of the film is there.
  virtual bool getAutoProgressivePlayback() const = 0;
  virtual void setAutoProgressivePlayback(bool automatic) = 0;

  /// Estimated seconds until the film is there; 0 when not known.
  virtual unsigned long getTimeRemaining() const = 0;
  virtual void setTimeRemaining(unsigned long seconds) = 0;

  /// Time of the last report of progress, in seconds of the platform's clock; 0 for none.
  virtual unsigned long getLastProgressUpdateTime() const = 0;
  virtual void setLastProgressUpdateTime(unsigned long seconds) = 0;

  /// The download library's record, copied in and out.
  virtual KPB::DownloadInfo getDownloadInfo() const = 0;
  virtual void setDownloadInfo(KPB::DownloadInfo info) = 0;
};

}  // namespace VeskPlayerX
