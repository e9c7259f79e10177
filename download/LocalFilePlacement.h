#pragma once

#include <QString>
#include <functional>
#include <string>

namespace download {

/// Whether something of that name exists; a parameter, so that tests need no files.
using Exists = std::function<bool(const std::wstring& path)>;

/// The local name for the film behind `url`: the last part of its path, unescaped, or
/// "Unknown.vesk" when no file can have that name.
std::wstring mediaFileName(const std::string& url);

/// The first of base + "[" + n + "]" + extension, from n = `first` on, that does not exist.
std::wstring firstFreeVariant(const std::wstring& base, const std::wstring& extension, int first,
                              const Exists& exists);

/// `folder` + `name`, or the first variant from [1] on, set before the name's last ".", that does
/// not exist; behind the whole name when it has no ".".
std::wstring freePathIn(const std::wstring& folder, const std::wstring& name, const Exists& exists);

/// `path`, or the first variant from [2] on, set before its extension, that does not exist.
std::wstring freePathLike(const std::wstring& path, const Exists& exists);

/// The preferred folder for films, with native separators and one more at its end.
std::wstring mediaFolderPrefix();

/// The preferred folder for films as it is stored.
QString mediaFolder();

}  // namespace download
