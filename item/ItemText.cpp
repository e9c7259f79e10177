#include "item/ItemText.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

namespace {

bool isAscii(const std::wstring& text) {
  return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= 0 && c < 0x80; });
}

}  // namespace

ItemText& ItemText::operator=(const ItemText& other) {
  if (this == &other) return *this;
  const std::optional<std::string_view> ascii = other.ascii();
  if (!ascii || wide_ != nullptr) return *this = other.wide();
  ascii_ = std::string(*ascii);
  return *this;
}

ItemText& ItemText::operator=(const std::wstring& text) {
  if (std::wstring* const wide = wide_) {
    *wide = text;
    ascii_.clear();
  } else if (isAscii(text)) {
    ascii_ = std::string(text.begin(), text.end());  // an `assign` would leave room for more
  } else {
    wide_ = new std::wstring(text);
    ascii_.clear();
  }
  return *this;
}

ItemText::~ItemText() { delete wide_.load(); }

const std::wstring& ItemText::wide() const {
  std::wstring* wide = wide_;
  if (wide != nullptr) return *wide;
  auto made = std::make_unique<std::wstring>(ascii_.begin(), ascii_.end());
  // Another thread may have been faster.
  return wide_.compare_exchange_strong(wide, made.get()) ? *made.release() : *wide;
}

std::optional<std::string_view> ItemText::ascii() const {
  const bool isAscii = !ascii_.empty() || wide_ == nullptr;
  return isAscii ? std::optional<std::string_view>(ascii_) : std::nullopt;
}

bool ItemText::operator==(const std::wstring& text) const {
  const std::optional<std::string_view> ascii = this->ascii();
  return ascii ? std::equal(ascii->begin(), ascii->end(), text.begin(), text.end())
               : wide() == text;
}

std::size_t ItemText::hash() const {
  const std::optional<std::string_view> ascii = this->ascii();
  return ascii ? std::hash<std::string_view>()(*ascii) : hashOf(wide());
}

std::size_t ItemText::hashOf(const std::wstring& text) {
  if (!isAscii(text)) return std::hash<std::wstring>()(text);
  return std::hash<std::string>()({text.begin(), text.end()});
}
