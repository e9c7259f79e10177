#include "playerx/app/reasons/Proxy.h"

#include <QUrl>
#include <cstdlib>
#include <initializer_list>

namespace playerx::reasons {

namespace {

/// The first of these variables that is set.
std::string valueOf(std::initializer_list<const char*> variables) {
  for (const char* variable : variables) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

}  // namespace

std::string proxyOf(const std::string& address) {
  const bool isSecure = QUrl(QString::fromStdString(address)).scheme() == "https";
  const std::string named = isSecure
                                ? valueOf({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
                                : valueOf({"http_proxy", "all_proxy", "ALL_PROXY"});
  const QString text = QString::fromStdString(named);
  const QUrl proxy(text.contains("://") ? text : "http://" + text);
  const std::string host = proxy.host().toStdString();
  return proxy.port() < 0 ? host : host + ":" + std::to_string(proxy.port());
}

Explanation explainProxyLogin(const std::string& address) {
  const std::string proxy = proxyOf(address);
  return proxy.empty() ? explain(reasonOfStatus(407))
                       : explain(Reason::kProxyLogin, {.host = proxy});
}

}  // namespace playerx::reasons
