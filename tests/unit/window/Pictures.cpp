// window-pictures SCENE FILE: draws the window in one scene, as the documentation shows it.

#include <QApplication>
#include <QFile>
#include <QLocale>
#include <QProxyStyle>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>
#include <functional>
#include <iostream>
#include <map>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/actions/FilmCommands.h"
#include "playerx/window/dialogs/AddAddressesDialog.h"
#include "playerx/window/dialogs/PreferencesDialog.h"
#include "playerx/window/model/Sentences.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/playback/WatchingPage.h"
#include "playerx/window/shell/Language.h"
#include "playerx/window/shell/MainWindow.h"
#include "playerx/window/view/FilmView.h"
#include "tests/unit/window/FakeDesktop.h"
#include "tests/unit/window/FakePlayer.h"
#include "tests/unit/window/Films.h"
#include "tests/unit/window/PartOf.h"
#include "tests/unit/window/RecordingQueue.h"

namespace playerx::window {
namespace {

Film titled(Film film, const QString& title, const QString& provider, quint64 size = 0) {
  film.title = title;
  film.provider = provider;
  if (size > 0) film.size = size;
  return film;
}

QList<Film> someFilms() {
  Film road =
      titled(arriving(1, 42), QStringLiteral("The Long Road"), QStringLiteral("films.example"));
  Film lake = titled(film(2, FilmState::kStopped), QStringLiteral("A House by the Lake"),
                     QStringLiteral("films.example"), 1'400'000'000);
  lake.percent = 63;
  lake.arrived = 882'000'000;
  Film night = titled(film(5, FilmState::kDone), QStringLiteral("Night Train to Lisbon Street"),
                      QStringLiteral("archive.example"), 1'100'000'000);
  night.finishedAt = QDateTime::currentDateTime();
  Film garden = titled(film(6, FilmState::kDone), QStringLiteral("The Gardener"),
                       QStringLiteral("films.example"), 700'000'000);
  garden.finishedAt = QDateTime::currentDateTime().addDays(-1);
  return {road,
          lake,
          titled(film(3), QStringLiteral("Second Spring"), QStringLiteral("films.example"),
                 1'200'000'000),
          titled(film(4), QStringLiteral("Cartographers"), QStringLiteral("archive.example"),
                 940'000'000),
          night,
          garden};
}

Film failedFor(FilmId id, const char* title, const reasons::Explanation& reason) {
  return titled(failed(id, QString::fromStdString(reason.code()), reasonSentence(reason)),
                QString::fromUtf8(title), QStringLiteral("films.example"));
}

reasons::Explanation tooLittleSpace() {
  return reasons::explain(reasons::Reason::kTooLittleSpace,
                          {.place = "/home/mia/Videos", .words = "1.9 GB needed, 400 MB free"});
}

QList<Film> failures() {
  using reasons::Reason;
  return {
      titled(arriving(1, 42), QStringLiteral("The Long Road"), QStringLiteral("films.example")),
      failedFor(2, "Broken Film",
                reasons::explain(reasons::reasonOfStatus(404), {.host = "films.example"})),
      failedFor(3, "Cartographers", tooLittleSpace()),
      failedFor(4, "A House by the Lake",
                reasons::explain(Reason::kExpired, {.host = "films.example"})),
  };
}

QList<Film> fromRightToLeft() {
  QList<Film> films = someFilms();
  const QStringList titles = {QStringLiteral("الطريق الطويل"), QStringLiteral("بيت على البحيرة"),
                              QStringLiteral("ربيع ثان"),      QStringLiteral("رسامو الخرائط"),
                              QStringLiteral("قطار الليل"),    QStringLiteral("البستاني")};
  for (qsizetype i = 0; i < films.size(); ++i) films[i].title = titles[i];
  return films;
}

QPalette darkPalette() {
  QPalette palette(QColor(0x2B, 0x2E, 0x33));
  palette.setColor(QPalette::Base, QColor(0x1E, 0x20, 0x24));
  palette.setColor(QPalette::Text, QColor(0xEE, 0xEE, 0xEE));
  palette.setColor(QPalette::Highlight, QColor(0x4A, 0x90, 0xE2));
  palette.setColor(QPalette::Link, QColor(0x7F, 0xB4, 0xF0));
  palette.setColor(QPalette::LinkVisited, QColor(0xB0, 0x9A, 0xE8));
  palette.setColor(QPalette::PlaceholderText, QColor(0x9A, 0x9A, 0x9A));
  palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0x80, 0x80, 0x80));
  palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x80, 0x80, 0x80));
  palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x80, 0x80, 0x80));
  return palette;
}

QPalette contrastPalette() {
  QPalette palette(Qt::black);
  palette.setColor(QPalette::Base, Qt::black);
  palette.setColor(QPalette::Text, Qt::white);
  palette.setColor(QPalette::WindowText, Qt::white);
  palette.setColor(QPalette::ButtonText, Qt::white);
  palette.setColor(QPalette::Highlight, Qt::yellow);
  palette.setColor(QPalette::HighlightedText, Qt::black);
  palette.setColor(QPalette::PlaceholderText, QColor(0xC0, 0xC0, 0xC0));
  return palette;
}

/// The style, with dialogs as most desktops have them.
class PlainStyle : public QProxyStyle {
 public:
  PlainStyle() : QProxyStyle(QStringLiteral("Fusion")) {}
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
  }
};

/// A window to be drawn, and what belongs to it.
class Stage {
 public:
  explicit Stage(FilmPlayer* player)
      : memory_(folder_.filePath(QStringLiteral("window.ini"))),
        window_({queue_, memory_, desktop_, player}) {
    window_.resize(960, 600);
    window_.show();
    QApplication::setActiveWindow(&window_);
  }

  MainWindow& window() { return window_; }
  RecordingQueue& queue() { return queue_; }

  void show(const QList<Film>& films, const QList<FilmId>& selected) {
    Q_EMIT queue_.changed(queueOf(films));
    Q_EMIT queue_.roomKnown(QStringLiteral("/home/mia/Videos"), 212'000'000'000ULL);
    QTest::qWait(400);
    partOf<FilmView>(window_).selectFilms(selected);
    partOf<FilmView>(window_).setFocus();
    QTest::qWait(400);
  }

  template <class Dialog>
  QWidget* dialog() {
    QTest::qWait(300);
    return window_.findChild<Dialog*>();
  }

 private:
  QTemporaryDir folder_;
  WindowMemory memory_;
  RecordingQueue queue_;
  FakeDesktop desktop_;
  MainWindow window_;
};

QPixmap list(const QList<Film>& films, const QList<FilmId>& selected) {
  Stage stage(nullptr);
  stage.show(films, selected);
  return stage.window().grab();
}

QPixmap dark(const QPalette& palette) {
  QApplication::setPalette(palette);
  return list(someFilms(), {1});
}

QPixmap failure() {
  Stage stage(nullptr);
  stage.show(failures(), {2});
  Notice notice;
  notice.kind = Notice::kNoSpace;
  notice.film = 3;
  notice.text = reasonSentence(tooLittleSpace());
  Q_EMIT stage.queue().noticed(notice);
  QTest::qWait(100);
  return stage.window().grab();
}

QPixmap playing() {
  const std::unique_ptr<FilmPlayer> player(makeFilmPlayer(nullptr));
  Stage stage(player.get());
  QFile whole(QStringLiteral(DEMO_MEDIA "/zoom.avi"));
  QTemporaryFile part;
  if (!whole.open(QIODevice::ReadOnly) || !part.open()) return {};
  const QByteArray bytes = whole.readAll();
  part.write(bytes.left(bytes.size() * 7 / 10));
  part.flush();
  Film zoom = titled(arriving(1, 70), QStringLiteral("Into the Valley"), QString(),
                     static_cast<quint64>(bytes.size()));
  zoom.partialPath = part.fileName();
  stage.show({zoom}, {1});
  player->setMuted(true);
  partOf<FilmCommands>(stage.window()).carryOut(Verb::kPlay, {1});
  if (!QTest::qWaitFor([&] { return player->state().position > 4.5; }, 30'000)) return {};
  QTest::keyClick(&partOf<WatchingPage>(stage.window()), Qt::Key_Up);
  QTest::qWait(100);
  return stage.window().grab();
}

QPixmap adding() {
  Stage stage(nullptr);
  partOf<ActionSet>(stage.window()).of(Verb::kAddAddresses)->trigger();
  auto* const dialog = static_cast<AddAddressesDialog*>(stage.dialog<AddAddressesDialog>());
  dialog->setText(
      QStringLiteral("https://films.example/the-long-road.avi\n"
                     "https://films.example/second-spring.mkv\n"
                     "see you tonight"));
  return dialog->grab();
}

QPixmap preferences() {
  Stage stage(nullptr);
  QueuePreferences preferences;
  preferences.mediaFolder = QStringLiteral("/home/mia/Videos");
  preferences.speedLimit = 2'000'000;
  Q_EMIT stage.queue().preferencesRead(preferences);
  partOf<ActionSet>(stage.window()).of(Verb::kPreferences)->trigger();
  return stage.dialog<PreferencesDialog>()->grab();
}

QPixmap largeFont() {
  QFont font = QApplication::font();
  font.setPointSizeF(font.pointSizeF() * 1.5);
  QApplication::setFont(font);
  return list(failures(), {2});
}

QPixmap german() {
  QLocale::setDefault(QLocale(QLocale::German));
  static Language language(QLocale{QLocale::German});
  return list(failures(), {1});
}

QPixmap rightToLeft() {
  QApplication::setLayoutDirection(Qt::RightToLeft);
  return list(fromRightToLeft(), {1});
}

const std::map<std::string, std::function<QPixmap()>> kScenes = {
    {"empty", [] { return list({}, {}); }},
    {"downloading", [] { return list(someFilms(), {1}); }},
    {"failure", failure},
    {"playing", playing},
    {"dark", [] { return dark(darkPalette()); }},
    {"high-contrast", [] { return dark(contrastPalette()); }},
    {"right-to-left", rightToLeft},
    {"german", german},
    {"large-font", largeFont},
    {"adding", adding},
    {"preferences", preferences},
};

}  // namespace
}  // namespace playerx::window

int main(int argc, char** argv) {
  QStandardPaths::setTestModeEnabled(true);
  QApplication application(argc, argv);
  QApplication::setStyle(new playerx::window::PlainStyle);
  QApplication::setApplicationName(QStringLiteral("VeskPlayerX"));
  QApplication::setApplicationDisplayName(QStringLiteral("Vesk Player X"));
  QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
  const auto scene =
      argc == 3 ? playerx::window::kScenes.find(argv[1]) : playerx::window::kScenes.end();
  if (scene == playerx::window::kScenes.end()) {
    std::cerr << "usage: window-pictures SCENE FILE" << std::endl;
    return 2;
  }
  const std::string name = argv[1];
  std::unique_ptr<playerx::window::Language> english;
  if (name != "german") {
    english = std::make_unique<playerx::window::Language>(QLocale(QLocale::English));
  }
  return scene->second().save(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
}
