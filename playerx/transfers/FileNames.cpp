#include "playerx/transfers/FileNames.h"

#include <QCryptographicHash>
#include <algorithm>
#include <climits>
#include <sstream>

namespace playerx::transfers {
namespace {

constexpr int kKeyDigits = 16;

std::size_t extensionStart(const std::string& name) {
  const std::size_t slash = name.rfind('/');
  const std::size_t dot = name.rfind('.');
  const bool inName = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  return inName ? dot : name.size();
}

bool isNumberFromTwoOn(const std::string& digits) {
  return !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos &&
         digits.front() != '0' && digits != "1";
}

}  // namespace

std::optional<std::string> cleanOutputName(const std::string& name, const std::string& suffix) {
  if (name.find('\0') != std::string::npos) return std::nullopt;
  std::string clean;
  std::istringstream components(name);
  std::size_t last = 0;
  for (std::string component; std::getline(components, component, '/');) {
    if (component.empty() || component == ".") continue;
    if (component == ".." || component.size() > NAME_MAX) return std::nullopt;
    clean += (clean.empty() ? "" : "/") + component;
    last = component.size();
  }
  if (clean.empty() || last + suffix.size() > NAME_MAX) return std::nullopt;
  return clean;
}

std::string numberedName(const std::string& name, unsigned number) {
  const std::size_t extension = extensionStart(name);
  return name.substr(0, extension) + "[" + std::to_string(number) + "]" + name.substr(extension);
}

bool isNameOrVariant(const std::string& name, const std::string& base) {
  if (name == base) return true;
  const std::string extension = base.substr(extensionStart(base));
  const std::string opening = base.substr(0, base.size() - extension.size()) + "[";
  const std::string closing = "]" + extension;
  if (name.size() <= opening.size() + closing.size()) return false;
  if (!name.starts_with(opening) || !name.ends_with(closing)) return false;
  return isNumberFromTwoOn(
      name.substr(opening.size(), name.size() - opening.size() - closing.size()));
}

std::string partKey(const std::string& place) {
  const QByteArray hash =
      QCryptographicHash::hash(QByteArray::fromStdString(place), QCryptographicHash::Sha256);
  return hash.toHex().left(kKeyDigits).toStdString();
}

}  // namespace playerx::transfers
