#include "playerx/framework/PluginCatalog.h"

#include <QFile>
#include <QString>
#include <algorithm>
#include <system_error>
#include <utility>

namespace playerx {
namespace {

namespace fs = std::filesystem;

constexpr qint64 kMostBytes = 1 << 20;  // a description takes a few hundred

std::vector<fs::path> descriptionsIn(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    std::error_code ignored;
    if (entry->path().extension() == ".json" && entry->is_regular_file(ignored)) {
      files.push_back(entry->path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::variant<PluginDescription, DescriptionProblem> readDescription(const fs::path& path) {
  QFile file(QFile::decodeName(path.c_str()));
  if (!file.open(QIODevice::ReadOnly)) {
    return DescriptionProblem{"It cannot be read: " + file.errorString().toStdString() + "."};
  }
  if (file.size() > kMostBytes) return DescriptionProblem{"It is too large for a description."};
  const QByteArray bytes = file.readAll();
  return parseDescription({bytes.constData(), static_cast<std::size_t>(bytes.size())},
                          path.parent_path());
}

bool knows(const PluginCatalog& catalog, const std::string& id) {
  return std::any_of(catalog.descriptions.begin(), catalog.descriptions.end(),
                     [&id](const PluginDescription& known) { return known.info.id == id; });
}

void addDescription(PluginCatalog& catalog, const fs::path& path) {
  auto read = readDescription(path);
  if (const auto* problem = std::get_if<DescriptionProblem>(&read)) {
    catalog.problems.push_back("Plug-in description " + path.string() + ": " + problem->text);
    return;
  }
  auto& description = std::get<PluginDescription>(read);
  if (!knows(catalog, description.info.id)) {
    catalog.descriptions.push_back(std::move(description));
  }
}

}  // namespace

PluginCatalog readPluginCatalog(const std::vector<fs::path>& folders) {
  PluginCatalog catalog;
  for (const fs::path& folder : folders) {
    for (const fs::path& path : descriptionsIn(folder)) addDescription(catalog, path);
  }
  return catalog;
}

}  // namespace playerx
