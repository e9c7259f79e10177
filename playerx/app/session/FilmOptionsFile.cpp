#include "playerx/app/session/FilmOptionsFile.h"

#include <QFile>
#include <QSaveFile>
#include <set>

#include "playerx/app/session/FilmOptionsJson.h"
#include "playerx/transfers/Address.h"

namespace playerx::session {

using Json = nlohmann::ordered_json;

namespace {

constexpr char kFileName[] = "film-options.json";

/// More than a queue of films needs.
constexpr qint64 kMostBytes = qint64{64} << 20;

std::string keyOf(const std::string& url) {
  const std::optional<Address> address = parseAddress(url);
  return address ? address->remembered : url;
}

std::map<std::string, FilmOptions> read(const std::filesystem::path& path) {
  std::map<std::string, FilmOptions> all;
  std::error_code error;
  QFile file(QString::fromStdString(path.string()));
  if (!std::filesystem::is_regular_file(path, error) || !file.open(QIODevice::ReadOnly)) return all;
  const QByteArray content = file.read(kMostBytes);
  const Json films = Json::parse(content.begin(), content.end(), nullptr, false);
  if (!films.is_object()) return all;
  for (const auto& [address, object] : films.items()) {
    if (const auto options = filmOptionsOf(object)) all[address] = *options;
  }
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
  save();
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

void FilmOptionsFile::save() const {
  const QString name = QString::fromStdString(file_.string());
  if (options_.empty()) {
    QFile::remove(name);
    return;
  }
  Json films = Json::object();
  for (const auto& [address, options] : options_) films[address] = jsonOf(options);
  QSaveFile file(name);
  if (!file.open(QIODevice::WriteOnly)) return;
  file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  const std::string text = films.dump(1, ' ', false, Json::error_handler_t::replace);
  file.write(text.data(), static_cast<qint64>(text.size()));
  file.commit();
}

}  // namespace playerx::session
