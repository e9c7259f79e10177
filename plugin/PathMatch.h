#pragma once

#include <string>

namespace plugin {

/// Whether two local paths name the same file as people see it: "/" and `separator` are the same,
/// and so are capital and small letters (of the process's locale). Pure.
bool isSamePath(const std::wstring& left, const std::wstring& right, wchar_t separator);

}  // namespace plugin
