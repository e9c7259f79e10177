#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace playerx {

/// The program and its arguments for playing `location`: `command` split at blanks (double quotes
/// group), the location appended behind "--" for the default program, so that no location is taken
/// for an option. Nullopt when the program cannot be found.
std::optional<QStringList> playerProgram(const QString& command, const QString& location);

/// The first word of `command`; the default program's name without one.
QString programName(const QString& command);

/// Starts it in a session of its own, so that a Ctrl-C in the terminal does not reach it. Returns
/// its process id, 0 on failure.
long long startProgram(const QStringList& program);

/// Whether the process lives.
bool isAlive(long long pid);

}  // namespace playerx
