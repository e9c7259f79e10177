#include <curl/curl.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QUrl>
#include <algorithm>
#include <csignal>
#include <iostream>
#include <stdexcept>

#include "KPX/OSUtilities.h"
#include "playerx/app/session/Places.h"
#include "playerx/app/session/Resources.h"
#include "playerx/window/desktop/BusDesktop.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/playback/FilmPlayer.h"
#include "playerx/window/queue/HandOver.h"
#include "playerx/window/queue/QueuePlaces.h"
#include "playerx/window/queue/SessionQueue.h"
#include "playerx/window/shell/Language.h"
#include "playerx/window/shell/MainWindow.h"
#include "playerx/window/shell/StopSignals.h"

namespace playerx::window {
namespace {

/// The exit status for wrong usage, as the command line's.
constexpr int kExitUsage = 2;

struct Arguments {
  session::SessionOptions session;
  QStringList inputs;
};

/// What the positional arguments name: addresses as they are, files by their whole paths.
QStringList inputsOf(const QStringList& arguments) {
  QStringList inputs;
  for (const QString& input : arguments) {
    const QUrl url(input);  // a file manager may name a ticket in this way
    const bool isAddress = input.contains(QLatin1String("://")) && !url.isLocalFile();
    const QString path = url.isLocalFile() ? url.toLocalFile() : input;
    inputs << (isAddress ? input : QDir::current().absoluteFilePath(path));
  }
  return inputs;
}

/// The arguments with one character for each byte.
QStringList bytewise(int argc, char** argv) {
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments << QString::fromLatin1(argv[i]);
  return arguments;
}

Arguments parse(const QApplication& application, int argc, char** argv) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("Downloads films and plays them while they arrive."));
  parser.addPositionalArgument(QStringLiteral("inputs"),
                               QStringLiteral("Addresses and ticket files (.tix) to download."),
                               QStringLiteral("[inputs...]"));
  const QCommandLineOption data(QStringLiteral("data"),
                                QStringLiteral("Folder of the queue and of unfinished films."),
                                QStringLiteral("folder"));
  const QCommandLineOption media(QStringLiteral("media"), QStringLiteral("Folder for films."),
                                 QStringLiteral("folder"));
  const QCommandLineOption plugins(QStringLiteral("plugins"),
                                   QStringLiteral("Folder of the player's plug-ins."),
                                   QStringLiteral("folder"));
  const QCommandLineOption authorities(QStringLiteral("cacert"),
                                       QStringLiteral("Certificate authorities to trust (PEM)."),
                                       QStringLiteral("file"));
  const QCommandLineOption services(QStringLiteral("services"),
                                    QStringLiteral("Address of the online services."),
                                    QStringLiteral("address"));
  parser.addOptions({data, media, plugins, authorities, services});
  parser.addHelpOption();
  parser.addVersionOption();
  if (!parser.parse(QApplication::arguments())) {
    std::cerr << "playerx: " << parser.errorText().toStdString() << std::endl;
    std::exit(kExitUsage);
  }
  parser.process(application);

  const QStringList inputs = inputsOf(parser.positionalArguments());
  // As text, a name that is not UTF-8 would have become the name of another folder.
  parser.parse(bytewise(argc, argv));
  const auto bytes = [&parser](const QCommandLineOption& option) {
    return parser.value(option).toLatin1().toStdString();
  };
  return {{.dataFolder = bytes(data),
           .mediaFolder = bytes(media),
           .pluginFolder = bytes(plugins),
           .caFile = bytes(authorities),
           .player = {},
           .services = bytes(services)},
          inputs};
}

QString dataFolder(const session::SessionOptions& options) {
  if (options.dataFolder.empty()) return VeskPlayerX::OSUtilities::getApplicationDataPath();
  return QDir::current().absoluteFilePath(QString::fromStdString(options.dataFolder));
}

/// Whether the toolkit has something to draw on.
bool hasScreen() {
  const auto isSet = [](const char* name) { return !qEnvironmentVariableIsEmpty(name); };
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

/// Whether the program only has to print something about itself.
bool isAboutItself(int argc, char** argv) {
  const QStringList words = {QStringLiteral("--help"), QStringLiteral("-h"),
                             QStringLiteral("--version"), QStringLiteral("-v")};
  return std::any_of(argv, argv + argc, [&](const char* argument) {
    return words.contains(QString::fromLocal8Bit(argument));
  });
}

/// Why no window can be opened, in one sentence; empty when one can. The toolkit would abort.
std::string obstacleToWindow() {
  if (!hasScreen()) return "there is no screen; `playerx-cli` works without one.";
  return session::lackOfResources();
}

int run(const QApplication& application, int argc, char** argv) {
  const Language language{QLocale()};
  const Arguments arguments = parse(application, argc, argv);
  const std::string problem = session::folderProblem(arguments.session);
  if (!problem.empty()) throw std::runtime_error(problem);
  if (handOver(dataFolder(arguments.session), arguments.inputs)) return 0;
  WindowMemory memory(dataFolder(arguments.session) + QStringLiteral("/window.ini"));
  SessionQueue queue(arguments.session);
  const std::unique_ptr<FilmPlayer> player(makeFilmPlayer(nullptr));
  BusDesktop desktop;
  MainWindow window({queue, memory, desktop, player.get()});
  StopSignals signals;
  QObject::connect(&signals, &StopSignals::raised, &window, &MainWindow::quit);
  QObject::connect(&window, &MainWindow::closed, &application, &QCoreApplication::quit);
  window.show();
  queue.open(window.wasPaused());
  if (!arguments.inputs.isEmpty()) window.take(arguments.inputs);
  return QApplication::exec();
}

}  // namespace
}  // namespace playerx::window

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN);        // a write beyond the limit of file sizes fails instead
  qputenv("DBUS_FATAL_WARNINGS", "0");  // a bus that dies at a bad moment does not end the player
  if (playerx::window::isAboutItself(argc, argv)) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  } else if (const std::string obstacle = playerx::window::obstacleToWindow(); !obstacle.empty()) {
    std::cerr << "playerx: " << obstacle << std::endl;
    return 1;
  }
  playerx::session::setHome();
  QApplication::setOrganizationName(QStringLiteral("Vesk"));
  QApplication::setApplicationName(QStringLiteral("VeskPlayerX"));
  playerx::window::useStoredProxy();
  QApplication application(argc, argv);
  QApplication::setApplicationDisplayName(QStringLiteral("Vesk Player X"));
  QApplication::setApplicationVersion(QStringLiteral(PLAYERX_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("playerx"));
  QApplication::setQuitOnLastWindowClosed(false);
  curl_global_init(CURL_GLOBAL_DEFAULT);
  try {
    return playerx::window::run(application, argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "playerx: " << error.what() << std::endl;
    return 1;
  }
}
