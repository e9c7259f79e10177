#include "playerx/window/shell/Language.h"

#include <QCoreApplication>
#include <QLibraryInfo>

/// Resources of a static library have to be asked for, from outside of any namespace.
static void initializeTranslations() { Q_INIT_RESOURCE(player_window_translations); }

namespace playerx::window {

Language::Language(const QLocale& locale) {
  initializeTranslations();
  const QString own = QStringLiteral(":/i18n");
  // The source texts are English, but for their plurals.
  if (english_.load(QStringLiteral("playerx_en"), own)) {
    QCoreApplication::installTranslator(&english_);
  }
  if (own_.load(locale, QStringLiteral("playerx"), QStringLiteral("_"), own)) {
    QCoreApplication::installTranslator(&own_);
  }
  if (reasons_.load(locale, QStringLiteral("reasons"), QStringLiteral("_"), own)) {
    QCoreApplication::installTranslator(&reasons_);
  }
  const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
  if (toolkit_.load(locale, QStringLiteral("qtbase"), QStringLiteral("_"), folder)) {
    QCoreApplication::installTranslator(&toolkit_);
  }
}

Language::~Language() {
  for (QTranslator* const each : {&toolkit_, &reasons_, &own_, &english_}) {
    QCoreApplication::removeTranslator(each);
  }
}

}  // namespace playerx::window
