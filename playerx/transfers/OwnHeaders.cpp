#include "playerx/transfers/OwnHeaders.h"

#include <QByteArrayView>
#include <algorithm>
#include <iterator>

namespace playerx::transfers {

bool isOwnHeader(std::string_view name) {
  static constexpr std::string_view kNames[] = {
      "Range", "If-Range", "Accept-Encoding", "Connection", "Content-Length", "Transfer-Encoding"};
  return std::any_of(std::begin(kNames), std::end(kNames), [name](std::string_view own) {
    return QByteArrayView(own).compare(name, Qt::CaseInsensitive) == 0;
  });
}

}  // namespace playerx::transfers
