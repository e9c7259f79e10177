#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "item/DownloadItem.h"

/// The fields of an item that a queue file keeps. Whatever reads, writes, measures or compares an
/// item goes by this one table. All functions are pure and may be called from any thread.
namespace persistence {

/// What the queue formats spell differently.
struct Spelling {
  std::wstring (*text)(std::string_view value);
  DownloadStatusEnumType (*status)(std::int32_t value);
};

/// Takes the values of an item's fields, one by one.
class FieldSink {
 public:
  FieldSink() = default;
  FieldSink(const FieldSink&) = delete;
  FieldSink& operator=(const FieldSink&) = delete;

  virtual void takeText(const std::wstring& text) = 0;
  virtual void takeBytes(std::string_view bytes) = 0;  ///< UTF-8, ASCII wide text too

  virtual void takeSigned(std::int32_t value) = 0;
  virtual void takeUnsigned(std::uint64_t value) = 0;
  virtual void takeFlag(bool value) = 0;

 protected:
  ~FieldSink() = default;
};

/// An attribute of an item's element and the field that it holds.
struct ItemAttribute {
  std::string_view name;
  void (*write)(const VeskPlayerX::DownloadItemInterface& item, FieldSink& sink);
  void (*read)(std::string_view value, const Spelling& spelling, DownloadItem& item);
};

/// In the order in which they are written.
extern const std::array<ItemAttribute, 12> kItemAttributes;

}  // namespace persistence
