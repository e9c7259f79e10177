#pragma once

#include <QDialog>

#include "playerx/window/inputs/PastedInputs.h"

class QDialogButtonBox;
class QLabel;
class QPlainTextEdit;

namespace playerx::window {

/// Asks for addresses, one or thousands, and says what it makes of the text.
class AddAddressesDialog : public QDialog {
  Q_OBJECT

 public:
  /// Begins with `text`, such as what the clipboard holds.
  explicit AddAddressesDialog(const QString& text, QWidget* parent = nullptr);

  /// What was entered; also while the dialog is open.
  const QStringList& inputs() const { return pasted_.inputs; }

  void setText(const QString& text);

 private:
  void look();

  QPlainTextEdit* const edit_;
  QLabel* const summary_;
  QDialogButtonBox* const buttons_;
  PastedInputs pasted_;
};

/// "3 films", and what is left out.
QString summaryOf(const PastedInputs& pasted);

}  // namespace playerx::window
