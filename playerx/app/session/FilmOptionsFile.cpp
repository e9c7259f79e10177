#include "playerx/app/session/FilmOptionsFile.h"

#include <set>
#include <sstream>

#include "playerx/app/model/JsonMembers.h"
#include "playerx/app/session/FilmOptionsJson.h"
#include "playerx/platform/SmallFile.h"
#include "playerx/transfers/Address.h"

namespace playerx::session {

using Json = nlohmann::ordered_json;

namespace {

/// More than a queue of films needs.
constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

std::string keyOf(const std::string& url) {
  const std::optional<Address> address = parseAddress(url);
  return address ? address->remembered : url;
}

std::string lineOf(const std::string& address, const FilmOptions& options) {
  const Json object{{"address", address}, {"options", jsonOf(options)}};
  return model::dumped(object) + '\n';
}

void readLine(const std::string& line, std::map<std::string, FilmOptions>& all) {
  const Json object = Json::parse(line.begin(), line.end(), nullptr, false);
  model::JsonMembers members(object);
  std::string address;
  members.take("address", address);
  if (!members.isGood() || !members.has("options")) return;
  if (const auto options = filmOptionsOf(members.at("options"))) all[address] = *options;
}

/// A later line of an address replaces an earlier one; a line that a crash cut off is passed over.
std::map<std::string, FilmOptions> read(const std::filesystem::path& path) {
  std::map<std::string, FilmOptions> all;
  std::istringstream content(readSmallFile(path, kMostBytes));
  for (std::string line; std::getline(content, line);) readLine(line, all);
  return all;
}

template <class Value>
void takeIfSet(Value& value, const Value& given) {
  if (given != Value{}) value = given;
}

}  // namespace

FilmOptionsFile::FilmOptionsFile(const std::filesystem::path& dataFolder)
    : file_(dataFolder / kFileName), options_(read(file_)) {}

FilmOptions FilmOptionsFile::add(const std::string& address, const FilmOptions& options) {
  FilmOptions& kept = options_[keyOf(address)];
  // The last command that names a user counts.
  const bool namesUser =
      !options.username.empty() || !options.password.empty() || !options.netrcFile.empty();
  if (namesUser) {
    kept.username = options.username;
    kept.password = options.password;
    kept.netrcFile = options.netrcFile;
  }
  takeIfSet(kept.tries, options.tries);
  takeIfSet(kept.timeout, options.timeout);
  takeIfSet(kept.headers, options.headers);
  takeIfSet(kept.referer, options.referer);
  takeIfSet(kept.cookieFile, options.cookieFile);
  const bool namesSum = !options.sha256.empty() || options.hasChecksumFile;
  if (namesSum) kept.sha256 = options.sha256;
  if (namesSum) kept.hasChecksumFile = options.hasChecksumFile;
  append(keyOf(address), kept);
  return kept;
}

void FilmOptionsFile::forget(const std::string& address) {
  if (options_.erase(keyOf(address)) > 0) save();
}

std::vector<std::string> FilmOptionsFile::prune(const std::vector<model::ItemState>& queue) {
  std::set<std::string> wanted;
  for (const model::ItemState& item : queue) {
    if (item.status != DownloadStatusCompleted) wanted.insert(keyOf(item.url));
  }
  std::vector<std::string> old;
  for (const auto& [address, options] : options_) {
    if (!wanted.contains(address)) old.push_back(address);
  }
  for (const std::string& address : old) options_.erase(address);
  if (!old.empty()) save();
  return old;
}

// A list of many films adds to the file at each of them.
void FilmOptionsFile::append(const std::string& address, const FilmOptions& options) const {
  // The line before may have been cut off.
  appendToSmallFile(file_, "\n" + lineOf(address, options));
}

void FilmOptionsFile::save() const {
  std::error_code error;
  std::string content;
  for (const auto& [address, options] : options_) content += lineOf(address, options);
  if (content.empty()) {
    std::filesystem::remove(file_, error);
  } else {
    replaceSmallFile(file_, content);
  }
}

}  // namespace playerx::session
