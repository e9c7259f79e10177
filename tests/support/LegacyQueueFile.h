#pragma once

#include <string>

namespace support {

/// A queue file as an earlier release wrote it, built attribute by attribute.
/// Owner: the test. Threads: one. Failure: none.
class LegacyQueueFile {
 public:
  /// Begins an item; attributes belong to the item begun last.
  LegacyQueueFile& item();

  /// An attribute whose value is written as it is given, markup escaped.
  LegacyQueueFile& attribute(const std::string& name, const std::string& value);

  /// An attribute whose value is a wide string in the release's own encoding.
  LegacyQueueFile& text(const std::string& name, const std::wstring& value);

  /// Anything between two items.
  LegacyQueueFile& raw(const std::string& markup);

  /// The file's content.
  std::string document() const;

 private:
  void endItem();

  std::string items_;
  bool isItemOpen_ = false;
};

/// Wide text in the release's encoding: base64 of its 32-bit characters.
std::string legacyText(const std::wstring& text);

}  // namespace support
