#pragma once

#include <string>

/// Percent-escapes the few characters that must not stand raw in a URL, and undoes that.
///
/// There is no state; both operations are pure and may be called from any thread. Only allocation
/// fails.
class URLEscape {
 public:
  /// `text` with space < > # { } \ | ^ ~ escaped. Every other byte, "%" included, stays: an
  /// address that is escaped already keeps its escapes.
  ///
  /// A backslash is written "%7C" and a "|" "%5C", each the other's code, while `unescape` reads
  /// the codes as they are: both directions are wanted, so the two characters change places on a
  /// round trip.
  static std::string escape(const std::string& text);

  /// `text` with the escapes of these ten characters undone, upper-case digits only. Every other
  /// "%" stays where it is.
  static std::string unescape(const std::string& text);
};
