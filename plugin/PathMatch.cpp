#include "plugin/PathMatch.h"

#include <algorithm>
#include <cwctype>

namespace plugin {

bool isSamePath(const std::wstring& left, const std::wstring& right, wchar_t separator) {
  const auto fold = [separator](wchar_t character) {
    return std::towlower(static_cast<std::wint_t>(character == L'/' ? separator : character));
  };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [fold](wchar_t l, wchar_t r) { return fold(l) == fold(r); });
}

}  // namespace plugin
