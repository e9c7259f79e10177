#pragma once

#include <cstddef>

static_assert(sizeof(wchar_t) == 4, "wide text holds UTF-32 code units");

namespace kvpm {

/// Converts `length` bytes of UTF-8 into at most `capacity` wide characters at `target`; writes no
/// terminator. Malformed bytes become U+FFFD each and set `*error`, which may be null. Returns the
/// characters written, or -1, with nothing promised about `target`, when they do not fit.
int UTF8ToWchart(const char* source, std::size_t length, wchar_t* target, std::size_t capacity,
                 bool* error);

/// Converts `length` wide characters into at most `capacity` bytes of UTF-8 at `target`; a
/// terminating NUL follows only when `final` is true. Surrogates and values above 0x10FFFF become
/// U+FFFD. Returns the bytes written without the terminator, or -1 when they do not fit.
int WchartToUTF8(const wchar_t* source, std::size_t length, char* target, std::size_t capacity,
                 bool final);

}  // namespace kvpm
