#include "playerx/app/session/HomeFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "playerx/cli/Options.h"

namespace playerx {

namespace {

bool isSet(const char* text) { return text != nullptr && *text != '\0'; }

}  // namespace

std::optional<std::string> homeFolder(const char* variable, const char* ofAccount) {
  if (isSet(variable)) return variable;
  // Accounts of services have the root of all files, which is nobody's home.
  if (isSet(ofAccount) && std::string(ofAccount) != "/") return ofAccount;
  return std::nullopt;
}

bool settleHome() {
  const passwd* const account = getpwuid(geteuid());
  const char* const variable = std::getenv("HOME");
  const auto home = homeFolder(variable, account != nullptr ? account->pw_dir : nullptr);
  if (home && !isSet(variable)) setenv("HOME", home->c_str(), 1);
  return home.has_value();
}

std::string homelessness(const Options& options, const char* dataHome) {
  std::string missing;
  if (options.dataFolder.empty() && !isSet(dataHome)) missing = "--data";
  if (options.mediaFolder.empty()) missing += missing.empty() ? "--media" : " and --media";
  if (missing.empty()) return {};
  return "There is no home folder: HOME is not set, and the account has none; name the folders "
         "with " +
         missing + ".";
}

}  // namespace playerx
