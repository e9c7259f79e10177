#include <gtest/gtest.h>

#include <QMimeData>
#include <QUrl>

#include "playerx/window/inputs/PastedInputs.h"

namespace playerx::window {
namespace {

QStringList inputs(const char* text) { return inputsInText(QString::fromUtf8(text)).inputs; }

TEST(PastedInputsTest, TakesOneAddressOnEachLine) {
  EXPECT_EQ(inputs("https://a.example/1.avi\r\n  http://b.example/2.mkv  \n"),
            QStringList({"https://a.example/1.avi", "http://b.example/2.mkv"}));
}

TEST(PastedInputsTest, FindsAddressesAmongWords) {
  EXPECT_EQ(inputs("see https://a.example/1.avi and HTTPS://a.example/2.avi"),
            QStringList({"https://a.example/1.avi", "HTTPS://a.example/2.avi"}));
}

TEST(PastedInputsTest, TakesTicketsByTheirPaths) {
  EXPECT_EQ(inputs("/tickets/two films.tix\n\"/quoted/one.TIX\"\nfile:///a%20b.tix"),
            QStringList({"/tickets/two films.tix", "/quoted/one.TIX", "/a b.tix"}));
}

TEST(PastedInputsTest, PassesCommentsAndEmptyLinesOver) {
  const PastedInputs pasted = inputsInText(QStringLiteral("# list\n\n \t\n"));
  EXPECT_TRUE(pasted.inputs.isEmpty());
  EXPECT_TRUE(pasted.leftOut.isEmpty());
}

TEST(PastedInputsTest, NamesWhatIsLeftOut) {
  const PastedInputs pasted = inputsInText(QStringLiteral("ftp://x/y.avi\nnonsense"));
  EXPECT_EQ(pasted.leftOut, QStringList({"ftp://x/y.avi", "nonsense"}));
}

TEST(PastedInputsTest, LeavesOutWhatIsTooLongForAnAddress) {
  const QString longest = QStringLiteral("http://h/") + QString(16'384 - 9, QLatin1Char('a'));
  const PastedInputs pasted = inputsInText(longest + "\n" + longest + "b");
  EXPECT_EQ(pasted.inputs, QStringList{longest});
  EXPECT_EQ(pasted.leftOut.size(), 1);
}

TEST(PastedInputsTest, TakesEachInputOnce) {
  EXPECT_EQ(inputs("http://a/1.avi\nhttp://a/1.avi").size(), 1);
}

TEST(PastedInputsTest, TakesDroppedLinksAndFiles) {
  QMimeData data;
  data.setUrls({QUrl(QStringLiteral("https://a.example/x%20y.avi")),
                QUrl::fromLocalFile(QStringLiteral("/t/one.tix"))});
  EXPECT_EQ(inputsInData(data).inputs, QStringList({"https://a.example/x%20y.avi", "/t/one.tix"}));
}

TEST(PastedInputsTest, ReadsHundredThousandLinesAtOnce) {
  QString text;
  for (int i = 0; i < 100'000; ++i) text += QStringLiteral("https://a.example/%1.avi\n").arg(i);
  EXPECT_EQ(inputsInText(text).inputs.size(), 100'000);
}

}  // namespace
}  // namespace playerx::window
