#include "playerx/app/inputs/Input.h"

#include <QString>
#include <algorithm>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/app/inputs/TicketFile.h"
#include "playerx/platform/Text.h"

namespace playerx::inputs {

using kvpm::StringTools;
using reasons::Reason;
using VeskPlayerX::DownloadManagerInterface;

namespace {

using Refusal = std::optional<reasons::Explanation>;

/// U+200C and U+200D, with which several languages spell words.
bool isJoiner(wchar_t c) { return c == 0x200C || c == 0x200D; }

/// The name of an address's file without its escapes, as people read it; empty, so that the manager
/// takes the name as it stands, without escapes or when they stand for what cannot be printed:
/// control characters, or those that turn the direction of what follows.
std::wstring readableTitle(const std::wstring& address) {
  const std::wstring name = kvpm::PathTools::getFileName(address);
  const QByteArray bytes = QByteArray::fromPercentEncoding(QString::fromStdWString(name).toUtf8());
  const WideText title = decodeUtf8({bytes.data(), static_cast<std::size_t>(bytes.size())});
  const bool isPrintable =
      !title.malformed &&
      std::all_of(title.characters.begin(), title.characters.end(), [](wchar_t c) {
        return isJoiner(c) || QChar::isPrint(static_cast<char32_t>(c));
      });
  return isPrintable && title.characters != name ? title.characters : L"";
}

Refusal addAddress(const std::string& address, DownloadManagerInterface& manager) {
  if (const auto reason = refusalOfAddress(address)) return reasons::explain(*reason);
  const std::wstring wide = StringTools::stringToWString(address);
  const bool isAdded = manager.add(wide, readableTitle(wide), L"") != nullptr;
  return isAdded ? Refusal() : reasons::explain(Reason::kUnsupportedType);
}

Refusal addTicket(const std::string& path, DownloadManagerInterface& manager,
                  const TakeMessages& takeMessages) {
  const std::wstring file = StringTools::stringToWString(unquoted(path));
  if (const auto refusal = refusalOfTicket(file)) return refusal;
  if (!manager.addTicket(StringTools::stringToWString(path), false).empty()) return {};
  const std::vector<std::string> words = takeMessages();
  if (words.empty()) return explainNothing(file);
  return reasons::explain(Reason::kServicesSaid, {.words = words.back()});
}

}  // namespace

Refusal addInput(const std::string& input, DownloadManagerInterface& manager,
                 const TakeMessages& takeMessages) {
  return isTicketPath(input) ? addTicket(input, manager, takeMessages)
                             : addAddress(cleaned(input), manager);
}

}  // namespace playerx::inputs
