#include "download/LocalFilePlacement.h"

#include <QDir>
#include <algorithm>

#include "KPX/KPXPreferences.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "persistence/URLEscape.h"

namespace download {

std::wstring mediaFileName(const std::string& url) {
  std::string name = url.substr(url.rfind('/') + 1);  // npos + 1 is the beginning
  name = name.substr(0, name.find('?'));
  if (name.empty() || name == "." || name == "..") name = "Unknown.vesk";
  return kvpm::StringTools::stringToWString(URLEscape::unescape(name));
}

std::wstring firstFreeVariant(const std::wstring& base, const std::wstring& extension, int first,
                              const Exists& exists) {
  for (int number = first;; ++number) {
    std::wstring candidate = base + L"[" + std::to_wstring(number) + L"]" + extension;
    if (!exists(candidate)) return candidate;
  }
}

std::wstring freePathIn(const std::wstring& folder, const std::wstring& name,
                        const Exists& exists) {
  if (!exists(folder + name)) return folder + name;
  const std::size_t dot = std::min(name.rfind(L'.'), name.size());
  return firstFreeVariant(folder + name.substr(0, dot), name.substr(dot), 1, exists);
}

std::wstring freePathLike(const std::wstring& path, const Exists& exists) {
  if (!exists(path)) return path;
  const std::wstring extension = kvpm::PathTools::getExtension(path);
  return firstFreeVariant(path.substr(0, path.size() - extension.size()), extension, 2, exists);
}

std::wstring mediaFolderPrefix() {
  return QDir::toNativeSeparators(mediaFolder()).toStdWString() +
         kvpm::PathTools::getWPathSeparator();
}

QString mediaFolder() {
  return KPXPreferences::getPreferenceHelper<QString>(KPXPreferences::MediaFolder,
                                                      KPXPreferences::MediaFolder_DEFAULT, false);
}

}  // namespace download
