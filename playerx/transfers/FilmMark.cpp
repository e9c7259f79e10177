#include "playerx/transfers/FilmMark.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <QCryptographicHash>
#include <cerrno>
#include <sstream>

#include "playerx/platform/BootId.h"

namespace playerx::transfers {
namespace {

constexpr char kAttribute[] = "user.vesk.film";
constexpr char kMarkFormat[] = "1";
constexpr char kOnDisk[] = "-";  // in the place of a boot
constexpr int kDigestDigits = 16;
constexpr std::size_t kLongestMark = 200;

std::optional<FilmMark> parseMark(const std::string& text) {
  std::istringstream words(text);
  std::string format;
  FilmMark mark;
  words >> format >> mark.place >> mark.address >> mark.size >> mark.boot;
  if (!words || format != kMarkFormat) return std::nullopt;
  if (mark.boot == kOnDisk) mark.boot.clear();
  return mark;
}

}  // namespace

std::string digestOf(std::string_view text) {
  const QByteArray hash = QCryptographicHash::hash(
      QByteArrayView(text.data(), static_cast<qsizetype>(text.size())), QCryptographicHash::Sha256);
  return hash.toHex().left(kDigestDigits).toStdString();
}

std::string currentBoot() {
  static const std::string boot = digestOf(bootId());
  return boot;
}

int writeMark(int file, const FilmMark& mark) {
  const std::string text = std::string(kMarkFormat) + ' ' + mark.place + ' ' + mark.address + ' ' +
                           std::to_string(mark.size) + ' ' +
                           (mark.boot.empty() ? kOnDisk : mark.boot);
  return ::fsetxattr(file, kAttribute, text.data(), text.size(), 0) == 0 ? 0 : errno;
}

std::optional<FilmMark> readMark(const std::filesystem::path& file) {
  char text[kLongestMark];
  const ssize_t length = ::lgetxattr(file.c_str(), kAttribute, text, sizeof text);
  if (length < 0) return std::nullopt;
  return parseMark(std::string(text, static_cast<std::size_t>(length)));
}

void removeMark(const std::filesystem::path& file) {
  if (::lremovexattr(file.c_str(), kAttribute) != 0) errno = 0;
}

bool isWhole(const FilmMark& mark, const std::filesystem::path& file) {
  struct stat status {};
  return ::lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         static_cast<std::uint64_t>(status.st_size) == mark.size &&
         (mark.boot.empty() || mark.boot == currentBoot());
}

}  // namespace playerx::transfers
