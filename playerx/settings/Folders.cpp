#include "playerx/settings/Folders.h"

#include <QDir>
#include <mutex>
#include <string>

#include "playerx/settings/ChosenFolders.h"

namespace playerx {
namespace {

std::mutex mutex;
// Guarded by mutex; empty for the default. Plain text, because the shared data of a QString is
// handed between threads inside the Qt library only.
std::u16string applicationData;
std::u16string temp;

std::u16string absolute(const QString& folder) {
  return folder.isEmpty() ? std::u16string() : QDir(folder).absolutePath().toStdU16String();
}

void choose(std::u16string& folder, const QString& value) {
  std::u16string chosen = absolute(value);
  const std::lock_guard lock(mutex);
  folder = std::move(chosen);
}

QString chosen(const std::u16string& folder) {
  const std::lock_guard lock(mutex);
  return QString::fromStdU16String(folder);
}

}  // namespace

void setApplicationDataPath(const QString& folder) { choose(applicationData, folder); }

void setTempPath(const QString& folder) { choose(temp, folder); }

QString chosenApplicationDataPath() { return chosen(applicationData); }

QString chosenTempPath() { return chosen(temp); }

}  // namespace playerx
