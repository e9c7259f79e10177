#include "playerx/player/PlayerProgram.h"

#include <QProcess>
#include <QStandardPaths>
#include <fstream>
#include <string>

namespace playerx {

namespace {

constexpr char kDefaultProgram[] = "mpv";

}  // namespace

QString programName(const QString& command) {
  const QStringList parts = QProcess::splitCommand(command);
  return parts.isEmpty() ? QString(kDefaultProgram) : parts.first();
}

std::optional<QStringList> playerProgram(const QString& command, const QString& location) {
  QStringList parts = QProcess::splitCommand(command);
  const bool isDefault = parts.isEmpty();
  if (isDefault) parts = {kDefaultProgram};
  const QString found = QStandardPaths::findExecutable(parts.first());
  if (found.isEmpty()) return std::nullopt;
  parts.first() = found;
  if (isDefault) parts << "--";
  return parts << location;
}

long long startProgram(const QStringList& program) {
  QProcess process;
  process.setProgram(program.first());
  process.setArguments(program.mid(1));
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(QProcess::nullDevice());
  qint64 pid = 0;
  return process.startDetached(&pid) ? pid : 0;
}

bool isAlive(long long pid) {
  if (pid <= 0) return false;
  // A signal to a process that has ended and was not collected by its parent succeeds; its state
  // tells. The state is the letter behind the name in brackets, which may hold anything.
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string line;
  if (!std::getline(file, line)) return false;
  const std::size_t name = line.rfind(") ");
  const char state = name != std::string::npos && name + 2 < line.size() ? line[name + 2] : 'X';
  return state != 'Z' && state != 'X';
}

}  // namespace playerx
