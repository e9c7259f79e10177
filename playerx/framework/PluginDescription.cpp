#include "playerx/framework/PluginDescription.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <algorithm>
#include <optional>

namespace playerx {
namespace {

std::optional<std::string> text(const QJsonObject& object, const char* name) {
  const QJsonValue value = object.value(QLatin1String(name));
  if (!value.isString() || value.toString().isEmpty()) return std::nullopt;
  return value.toString().toStdString();
}

std::optional<std::vector<std::string>> texts(const QJsonObject& object, const char* name) {
  const QJsonValue value = object.value(QLatin1String(name));
  if (!value.isArray()) return std::nullopt;
  std::vector<std::string> result;
  for (const QJsonValue& element : value.toArray()) {
    if (!element.isString()) return std::nullopt;
    result.push_back(element.toString().toStdString());
  }
  if (result.empty()) return std::nullopt;
  return result;
}

// Numbers of up to nine digits joined by single dots.
bool isVersion(const std::string& version) {
  int digits = 0;
  for (const char character : version) {
    const bool digit = character >= '0' && character <= '9';
    if (!digit && (character != '.' || digits == 0)) return false;
    digits = digit ? digits + 1 : 0;
    if (digits > 9) return false;
  }
  return digits > 0;
}

std::variant<PluginDescription, DescriptionProblem> fromObject(
    const QJsonObject& object, const std::filesystem::path& folder) {
  const auto id = text(object, "id");
  if (!id) return DescriptionProblem{"It has no \"id\"."};
  const auto version = text(object, "version");
  if (!version || !isVersion(*version)) {
    return DescriptionProblem{"Its \"version\" is not made of numbers joined by dots."};
  }
  const auto interfaces = texts(object, "interfaces");
  if (!interfaces) return DescriptionProblem{"Its \"interfaces\" are not a list of texts."};
  const auto library = text(object, "library");
  if (!library) return DescriptionProblem{"It has no \"library\"."};
  return PluginDescription{{*id, *version, *interfaces}, folder / *library};
}

}  // namespace

std::variant<PluginDescription, DescriptionProblem> parseDescription(
    std::string_view json, const std::filesystem::path& folder) {
  QJsonParseError error;
  const QJsonDocument document =
      QJsonDocument::fromJson(QByteArray(json.data(), static_cast<qsizetype>(json.size())), &error);
  if (error.error != QJsonParseError::NoError) {
    return DescriptionProblem{"It is not JSON: " + error.errorString().toStdString() + " at byte " +
                              std::to_string(error.offset) + "."};
  }
  if (!document.isObject()) return DescriptionProblem{"It is not a JSON object."};
  return fromObject(document.object(), folder);
}

}  // namespace playerx
