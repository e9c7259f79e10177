#include "playerx/app/inputs/InputText.h"

#include <QString>
#include <QUrl>
#include <algorithm>

#include "kvpm/StringTools.h"
#include "playerx/platform/Text.h"
#include "playerx/transfers/Address.h"

namespace playerx::inputs {

using kvpm::StringTools;
using reasons::Reason;

namespace {

/// The download manager takes every address for a secure one that has "https" anywhere.
bool isTakenForSecure(const std::string& address) {
  const QString text = QString::fromStdString(address);
  return !text.startsWith("https:", Qt::CaseInsensitive) &&
         text.contains("https", Qt::CaseInsensitive);
}

/// A host may be written with letters of any language; its name in the network is ASCII.
std::string withAsciiHost(const std::string& address) {
  const std::size_t behind = address.find("://") + 3;
  const std::size_t end = std::min(address.find_first_of("/?#", behind), address.size());
  const std::size_t user = address.rfind('@', end);
  const std::size_t begin = user == std::string::npos || user < behind ? behind : user + 1;
  const std::size_t length = std::min(address.find(':', begin), end) - begin;
  const std::string host = address.substr(begin, length);
  const QByteArray ascii = QUrl::toAce(QString::fromStdString(host));
  const bool isAscii = std::all_of(host.begin(), host.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  return isAscii || ascii.isEmpty()
             ? address
             : std::string(address).replace(begin, length, ascii.toStdString());
}

}  // namespace

bool isTicketPath(const std::string& argument) {
  const QString bare = QString::fromStdString(unquoted(argument));
  return !bare.contains("://") && bare.endsWith(".tix", Qt::CaseInsensitive);
}

std::string unquoted(const std::string& input) {
  const std::wstring wide = StringTools::stringToWString(input);
  return StringTools::wStringToString(StringTools::stripBeginingAndEndChar(wide, L'"'));
}

std::string cleaned(const std::string& input) {
  if (input.find("://") == std::string::npos) return input;
  const bool isText = !decodeUtf8(input).malformed;
  const std::string text = isText ? withAsciiHost(input) : escapedBeyondAscii(input);
  // A fragment is for the reader of what an address names, not for its server. A password may
  // have the same character.
  const std::size_t user = text.rfind('@');
  const std::size_t end = text.find('#', user == std::string::npos ? 0 : user);
  return QString::fromStdString(text.substr(0, end)).trimmed().toStdString();
}

std::optional<Reason> refusalOfAddress(const std::string& address) {
  const AddressFault fault = faultOf(address);
  if (fault == AddressFault::kNotWeb) return Reason::kNoAddress;
  // Blanks are escaped by the download manager, so only control characters are refused here.
  const std::optional<Address> parsed = parseAddress(address);
  if (!parsed) return reasons::reasonOf(fault);
  if (parsed->hasCredentials) return Reason::kCredentialsInAddress;
  if (parsed->host.starts_with('[')) return Reason::kNumericHost6;
  if (isTakenForSecure(address)) return Reason::kMisplacedHttps;
  return std::nullopt;
}

std::string displayPath(const std::string& path) {
  return path.find("://") == std::string::npos ? path : withoutCredentials(path);
}

}  // namespace playerx::inputs
