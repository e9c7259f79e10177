#include <gtest/gtest.h>

#include <QApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include "playerx/window/playback/MpvFilmPlayer.h"

namespace playerx::window {
namespace {

/// Plays the demo's films into a widget that is drawn in memory.
class MpvFilmPlayerTest : public testing::Test {
 protected:
  MpvFilmPlayerTest() {
    player_.picture()->setParent(&window_);
    window_.resize(320, 180);
    player_.picture()->resize(320, 180);
    window_.show();
    player_.setMuted(true);
  }

  static QByteArray film(const char* name) {
    QFile file(QStringLiteral(DEMO_MEDIA "/") + QString::fromLatin1(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
  }

  FilmSource complete(const char* name) {
    FilmSource source;
    source.file = QStringLiteral(DEMO_MEDIA "/") + QString::fromLatin1(name);
    source.isComplete = true;
    return source;
  }

  /// The first `percent` of a film, in a file that `grow` makes longer.
  FilmSource arriving(const QByteArray& bytes, int percent) {
    rest_ = bytes;
    grow(bytes.size() * percent / 100);
    FilmSource source;
    source.file = partial_;
    source.total = static_cast<quint64>(bytes.size());
    return source;
  }

  void grow(qsizetype count) {
    QFile file(partial_);
    EXPECT_TRUE(file.open(QIODevice::Append));
    file.write(rest_.left(count));
    rest_.remove(0, count);
  }

  bool becomes(bool (*holds)(const PlaybackState&), int timeoutMs = 20'000) {
    return QTest::qWaitFor([&] { return holds(player_.state()); }, timeoutMs);
  }

  /// Waits until so many different pictures were seen.
  bool shows(int pictures) {
    QSet<QByteArray> seen;
    return QTest::qWaitFor(
        [&] {
          const QImage image = window_.grab().toImage();
          seen.insert(QCryptographicHash::hash(
              QByteArrayView(image.constBits(), image.sizeInBytes()), QCryptographicHash::Md5));
          return seen.size() >= pictures;
        },
        20'000);
  }

  QTemporaryDir folder_;
  const QString partial_ = folder_.filePath(QStringLiteral("film.part"));
  QByteArray rest_;
  QWidget window_;
  MpvFilmPlayer player_{nullptr};
};

bool isLoaded(const PlaybackState& state) { return state.isLoaded; }
bool isWaiting(const PlaybackState& state) { return state.isLoaded && state.isWaiting; }
bool hasEnded(const PlaybackState& state) { return state.hasEnded; }
bool hasProblem(const PlaybackState& state) { return !state.problem.isEmpty(); }

TEST_F(MpvFilmPlayerTest, MovesThePicturesOfACompleteFilm) {
  player_.open(complete("counting.avi"));
  EXPECT_TRUE(shows(10));
  EXPECT_TRUE(player_.state().hasPicture);
  EXPECT_TRUE(player_.state().duration.has_value());
}

TEST_F(MpvFilmPlayerTest, PlaysAnArrivingFilmWaitsAtItsEdgeAndGoesOn) {
  player_.open(arriving(film("counting.avi"), 30));
  ASSERT_TRUE(shows(5));
  ASSERT_TRUE(becomes(isWaiting)) << "at the edge";
  EXPECT_LT(player_.state().arrived, 0.35);
  const double edge = player_.state().position;
  grow(rest_.size());
  player_.filmGrew();
  EXPECT_TRUE(QTest::qWaitFor([&] { return player_.state().position > edge + 1; }, 20'000));
  EXPECT_TRUE(shows(5));
  player_.filmEnded();
  player_.seek(*player_.state().duration - 0.5);
  EXPECT_TRUE(becomes(hasEnded));
  EXPECT_EQ(player_.state().problem, QString());
}

TEST_F(MpvFilmPlayerTest, GoesBackWhileItWaitsAtTheEdge) {
  player_.open(arriving(film("counting.avi"), 40));
  ASSERT_TRUE(becomes(isWaiting));
  const double edge = player_.state().position;
  player_.seek(0);
  EXPECT_TRUE(QTest::qWaitFor([&] { return player_.state().position < edge; }, 10'000));
  EXPECT_TRUE(shows(4));
}

TEST_F(MpvFilmPlayerTest, SeeksNoFurtherThanHasArrived) {
  player_.open(arriving(film("counting.avi"), 40));
  ASSERT_TRUE(becomes(isLoaded));
  ASSERT_TRUE(QTest::qWaitFor([this] { return player_.state().duration.has_value(); }));
  player_.seek(*player_.state().duration);
  EXPECT_TRUE(becomes(isWaiting));
  EXPECT_LT(player_.state().position, *player_.state().duration * 0.6);
}

TEST_F(MpvFilmPlayerTest, ShowsAMovedFilmToItsEnd) {
  player_.open(arriving(film("counting.avi"), 30));
  ASSERT_TRUE(becomes(isLoaded));
  grow(rest_.size());
  QFile::rename(partial_, folder_.filePath(QStringLiteral("film.avi")));
  player_.filmEnded();
  ASSERT_TRUE(QTest::qWaitFor([this] { return player_.state().duration.has_value(); }));
  player_.seek(*player_.state().duration - 0.5);
  EXPECT_TRUE(becomes(hasEnded));
}

TEST_F(MpvFilmPlayerTest, EndsWhereADownloadThatFailedHasEnded) {
  player_.open(arriving(film("counting.avi"), 30));
  ASSERT_TRUE(becomes(isWaiting));
  player_.filmEnded();
  EXPECT_TRUE(becomes(hasEnded));
}

TEST_F(MpvFilmPlayerTest, ClosesAtOnceWhileItWaits) {
  player_.open(arriving(film("counting.avi"), 30));
  ASSERT_TRUE(becomes(isWaiting));
  QElapsedTimer clock;
  clock.start();
  player_.close();
  EXPECT_LT(clock.elapsed(), 10'000) << "far above what it takes; nothing else would end the wait";
  EXPECT_FALSE(player_.state().isOpen);
  player_.open(complete("zoom.avi"));
  EXPECT_TRUE(shows(3)) << "the next film plays";
}

TEST_F(MpvFilmPlayerTest, SaysThatAFileIsNoFilm) {
  QFile file(partial_);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(QByteArray(50'000, 'x'));
  file.close();
  FilmSource source;
  source.file = partial_;
  source.isComplete = true;
  player_.open(source);
  EXPECT_TRUE(becomes(hasProblem));
  EXPECT_EQ(player_.state().problem, QStringLiteral("This file is no film that can be shown."));
}

TEST_F(MpvFilmPlayerTest, RefusesAListOfOtherFiles) {
  QFile file(partial_);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("#EXTM3U\n" DEMO_MEDIA "/counting.avi\n");
  file.close();
  FilmSource source;
  source.file = partial_;
  source.isComplete = true;
  player_.open(source);
  EXPECT_TRUE(becomes(hasProblem));
  EXPECT_FALSE(player_.state().isLoaded);
}

TEST_F(MpvFilmPlayerTest, SaysThatAFileIsGone) {
  FilmSource source;
  source.file = QStringLiteral("/nowhere/film.avi");
  player_.open(source);
  EXPECT_EQ(player_.state().problem,
            QStringLiteral("The film cannot be read: No such file or directory."));
}

TEST_F(MpvFilmPlayerTest, BeginsWhereTheFilmWasLeft) {
  FilmSource source = complete("counting.avi");
  source.startAt = 3;
  player_.open(source);
  EXPECT_TRUE(QTest::qWaitFor([this] { return player_.state().position >= 3; }, 20'000));
}

TEST_F(MpvFilmPlayerTest, PausesAndGoesOn) {
  player_.open(complete("counting.avi"));
  ASSERT_TRUE(shows(3));
  player_.setPaused(true);
  ASSERT_TRUE(becomes([](const PlaybackState& state) { return state.isPaused; }));
  player_.setPaused(false);
  EXPECT_TRUE(shows(3));
}

TEST_F(MpvFilmPlayerTest, ShowsAFilmWhoseFileVanishesAsFarAsItHasArrived) {
  player_.open(arriving(film("counting.avi"), 40));
  ASSERT_TRUE(becomes(isLoaded));
  ASSERT_TRUE(QFile::remove(partial_));
  player_.filmGrew();
  ASSERT_TRUE(becomes(isWaiting));
  player_.filmEnded();
  EXPECT_TRUE(becomes(hasEnded));
  player_.open(complete("zoom.avi"));
  EXPECT_TRUE(shows(3)) << "the next film plays";
}

TEST_F(MpvFilmPlayerTest, DrawsWithOpenGlWhereThatWorksAndInMemoryElsewhere) {
  const bool isOpenGl = player_.picture()->inherits("QOpenGLWidget");
  const QByteArray expected = qgetenv("PLAYERX_EXPECTED_SURFACE");
  EXPECT_EQ(isOpenGl, expected == "opengl");
}

TEST(FilmStreamsTest, KnowsTheHeadOfAnMpegProgramStream) {
  EXPECT_TRUE(isMpegProgramStream("\0\0\1\xBA", 4));
  EXPECT_FALSE(isMpegProgramStream("RIFF", 4));
  EXPECT_FALSE(isMpegProgramStream("\0\0\1", 3));
}

}  // namespace
}  // namespace playerx::window
