#pragma once

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// A text of an item. A long queue holds several for each item, and nearly all are ASCII: these
/// take one byte for each character until somebody asks for wide text.
///
/// Several threads may read one, or one may write it. Nothing but allocation fails; an assignment
/// that fails changes nothing.
class ItemText {
 public:
  ItemText() = default;
  ItemText(const ItemText&) = delete;
  ItemText& operator=(const ItemText& other);
  ItemText& operator=(const std::wstring& text);
  ~ItemText();

  /// The same object from the first call on, whatever is assigned later.
  const std::wstring& wide() const;

  /// One byte for each character; nullopt for a text that is not known to be ASCII.
  std::optional<std::string_view> ascii() const;

  bool operator==(const std::wstring& text) const;

  /// The same for equal texts.
  std::size_t hash() const;
  static std::size_t hashOf(const std::wstring& text);

 private:
  std::string ascii_;  // the text, unless it is empty while there is wide text
  mutable std::atomic<std::wstring*> wide_ = nullptr;  // owned; null until it is asked for
};
