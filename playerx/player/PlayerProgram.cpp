#include "playerx/player/PlayerProgram.h"

#include <QProcess>
#include <QStandardPaths>
#include <csignal>

namespace playerx {

namespace {

constexpr char kDefaultProgram[] = "mpv";

}  // namespace

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

bool isAlive(long long pid) { return pid > 0 && kill(static_cast<pid_t>(pid), 0) == 0; }

}  // namespace playerx
