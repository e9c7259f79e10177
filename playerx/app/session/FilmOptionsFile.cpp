#include "playerx/app/session/FilmOptionsFile.h"

#include <QFile>
#include <QSaveFile>
#include <set>

#include "playerx/app/model/JsonMembers.h"
#include "playerx/app/session/FilmOptionsJson.h"
#include "playerx/transfers/Address.h"

namespace playerx::session {

using Json = nlohmann::ordered_json;

namespace {

constexpr char kFileName[] = "film-options.jsonl";

/// More than a queue of films needs.
constexpr qint64 kMostBytes = qint64{64} << 20;

constexpr auto kOwnerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

std::string keyOf(const std::string& url) {
  const std::optional<Address> address = parseAddress(url);
  return address ? address->remembered : url;
}

QByteArray lineOf(const std::string& address, const FilmOptions& options) {
  const Json object{{"address", address}, {"options", jsonOf(options)}};
  return QByteArray::fromStdString(object.dump(-1, ' ', false, Json::error_handler_t::replace)) +
         '\n';
}

void readLine(const QByteArray& line, std::map<std::string, FilmOptions>& all) {
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
  std::error_code error;
  QFile file(QString::fromStdString(path.string()));
  if (!std::filesystem::is_regular_file(path, error) || !file.open(QIODevice::ReadOnly)) return all;
  for (const QByteArray& line : file.read(kMostBytes).split('\n')) readLine(line, all);
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
  const bool namesUser = !options.username.empty() || !options.password.empty();
  if (namesUser) kept.username = options.username;
  if (namesUser) kept.password = options.password;
  takeIfSet(kept.tries, options.tries);
  takeIfSet(kept.timeout, options.timeout);
  takeIfSet(kept.headers, options.headers);
  takeIfSet(kept.referer, options.referer);
  takeIfSet(kept.netrcFile, options.netrcFile);
  takeIfSet(kept.cookieFile, options.cookieFile);
  const bool namesSum = !options.sha256.empty() || options.hasChecksumFile;
  if (namesSum) kept.sha256 = options.sha256;
  if (namesSum) kept.hasChecksumFile = options.hasChecksumFile;
  append(keyOf(address), kept);
  return kept;
}

void FilmOptionsFile::prune(const std::vector<model::ItemState>& queue) {
  std::set<std::string> wanted;
  for (const model::ItemState& item : queue) {
    if (item.status != DownloadStatusCompleted) wanted.insert(keyOf(item.url));
  }
  const auto isOld = [&wanted](const auto& entry) { return !wanted.contains(entry.first); };
  if (std::erase_if(options_, isOld) > 0) save();
}

// A list of many films adds to the file at each of them.
void FilmOptionsFile::append(const std::string& address, const FilmOptions& options) const {
  QFile file(QString::fromStdString(file_.string()));
  if (!file.open(QIODevice::WriteOnly | QIODevice::Append, kOwnerOnly)) return;
  // Behind a line that was cut off.
  file.write("\n" + lineOf(address, options));
}

void FilmOptionsFile::save() const {
  const QString name = QString::fromStdString(file_.string());
  if (options_.empty()) {
    QFile::remove(name);
    return;
  }
  QSaveFile file(name);
  if (!file.open(QIODevice::WriteOnly)) return;
  file.setPermissions(kOwnerOnly);
  for (const auto& [address, options] : options_) file.write(lineOf(address, options));
  file.commit();
}

}  // namespace playerx::session
