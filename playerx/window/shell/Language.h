#pragma once

#include <QLocale>
#include <QTranslator>

namespace playerx::window {

/// The words of the window and of Qt's own dialogs in a language, as long as this lives; English,
/// with its plurals, where there is no translation. On the UI thread, before any window.
class Language {
 public:
  explicit Language(const QLocale& locale);
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;
  ~Language();

 private:
  QTranslator english_;
  QTranslator own_;
  QTranslator reasons_;
  QTranslator toolkit_;
};

}  // namespace playerx::window
