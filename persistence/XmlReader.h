#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Reads XML with the system's library. May be used from any thread.
namespace persistence {

/// The attributes of an element while it is being read.
class XmlAttributes {
 public:
  /// `attributes` in the library's layout: five pointers for each of `count`.
  XmlAttributes(const unsigned char** attributes, int count)
      : attributes_(attributes), count_(count) {}

  /// The value of the first attribute of this local name, which is not empty; nullopt if absent.
  std::optional<std::string_view> find(std::string_view name) const;

 private:
  const unsigned char** attributes_;
  int count_;
};

/// Receives the elements of a document in its order. It may throw `std::bad_alloc`.
class XmlHandler {
 public:
  XmlHandler() = default;
  XmlHandler(const XmlHandler&) = delete;
  XmlHandler& operator=(const XmlHandler&) = delete;

  /// An element of this local name, `depth` elements below the root. Returns false to refuse the
  /// whole document.
  virtual bool onElement(int depth, std::string_view name, const XmlAttributes& attributes) = 0;

 protected:
  ~XmlHandler() = default;
};

enum class XmlResult {
  kRead,
  kRefused,      ///< not well-formed, hostile, larger than 2 GiB, or refused by the handler
  kOutOfMemory,  ///< the handler may have missed something
  kUnreadable,   ///< the source has failed; the same
};

/// Gives the next bytes of a document, up to `size` of them, to `buffer`. Returns how many; 0
/// behind the last one, and less when they cannot be read now. It may throw `std::bad_alloc`.
using XmlSource = std::function<std::int64_t(char* buffer, std::size_t size)>;

/// The source of a document that is there as a whole and outlives it.
XmlSource sourceOf(std::string_view bytes);

/// Reads a document piece by piece. Nothing is printed, and no other file is opened. Documents that
/// cost far more memory or time than their size suggests are refused: those with entity
/// declarations, with default values that add up to more than what was read until then, and with
/// very many attributes in an element.
XmlResult readXml(const XmlSource& source, XmlHandler& handler);

}  // namespace persistence
