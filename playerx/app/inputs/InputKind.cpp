#include "playerx/app/inputs/InputKind.h"

#include <QUrl>

#include "playerx/app/reasons/WebAddress.h"

namespace playerx {

InputKind sortInput(const std::string& argument, FailureReason* reason) {
  QString text = QString::fromStdString(argument);
  const bool quoted = text.size() > 1 && text.startsWith('"') && text.endsWith('"');
  const QString bare = quoted ? text.mid(1, text.size() - 2) : text;
  const bool isAddress = bare.contains("://");
  if (!isAddress && bare.endsWith(".tix", Qt::CaseInsensitive)) return InputKind::kTicket;

  if (hasBadPort(argument)) {
    *reason = {"unsupported_url", faultOfAddress(argument)};
    if (!reason->sentence.empty()) return InputKind::kUnusable;
  }
  const QUrl url(text, QUrl::TolerantMode);
  if (!url.userInfo().isEmpty()) {
    *reason = {"unsupported_url", "An address with a user name or password is not supported."};
    return InputKind::kUnusable;
  }
  const bool web = url.scheme() == "http" || url.scheme() == "https";
  if (web && !url.host().isEmpty()) return InputKind::kAddress;
  *reason = {"unsupported_url",
             "This is no address of a film; give one that begins with http:// or https://, or a "
             "ticket file (.tix)."};
  return InputKind::kUnusable;
}

FailureReason unsupportedType() {
  return {"unsupported_type",
          "This file type is not supported; the address must end in .vesk, .xvid, .avi or .mkv."};
}

}  // namespace playerx
