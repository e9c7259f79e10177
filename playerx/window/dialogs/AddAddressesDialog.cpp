#include "playerx/window/dialogs/AddAddressesDialog.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "playerx/window/model/FilmText.h"

namespace playerx::window {

namespace {

/// A longer piece of a line that is left out says no more.
constexpr int kShownCharacters = 40;

}  // namespace

QString summaryOf(const PastedInputs& pasted) {
  if (pasted.inputs.isEmpty() && pasted.leftOut.isEmpty()) return {};
  const QString found = AddAddressesDialog::tr("%n address(es) or ticket(s) found.", nullptr,
                                               static_cast<int>(pasted.inputs.size()));
  if (pasted.leftOut.isEmpty()) return found;
  QString example = cleanText(pasted.leftOut.first());
  if (example.size() > kShownCharacters) example = example.left(kShownCharacters) + QChar(0x2026);
  const QString left = AddAddressesDialog::tr("%n line(s) left out, such as “%1”.", nullptr,
                                              static_cast<int>(pasted.leftOut.size()))
                           .arg(example);
  //: Two sentences, complete in themselves.
  return AddAddressesDialog::tr("%1 %2").arg(found, left);
}

AddAddressesDialog::AddAddressesDialog(const QString& text, QWidget* parent)
    : QDialog(parent),
      edit_(new QPlainTextEdit(this)),
      summary_(new QLabel(this)),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Cancel, this)) {
  setWindowTitle(tr("Add addresses"));
  auto* const label = new QLabel(tr("&Addresses of films, one on each line:"), this);
  label->setBuddy(edit_);
  edit_->setLineWrapMode(QPlainTextEdit::NoWrap);
  edit_->setTabChangesFocus(true);
  edit_->setPlaceholderText(QStringLiteral("https://films.example/the-long-road.avi"));
  edit_->setAccessibleName(tr("Addresses of films"));
  summary_->setTextFormat(Qt::PlainText);
  summary_->setWordWrap(true);
  summary_->setMinimumHeight(2 * summary_->fontMetrics().lineSpacing());
  summary_->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  auto* const add = buttons_->addButton(tr("Add"), QDialogButtonBox::AcceptRole);
  add->setDefault(true);

  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(16, 16, 16, 16);
  column->setSpacing(8);
  column->addWidget(label);
  column->addWidget(edit_, 1);
  column->addWidget(summary_);
  column->addWidget(buttons_);
  resize(40 * fontMetrics().averageCharWidth() * 2, 18 * fontMetrics().lineSpacing());

  connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(edit_, &QPlainTextEdit::textChanged, this, &AddAddressesDialog::look);
  setText(text);
}

void AddAddressesDialog::setText(const QString& text) {
  if (text.isEmpty()) look();
  edit_->setPlainText(text);  // looks
}

void AddAddressesDialog::look() {
  pasted_ = inputsInText(edit_->toPlainText());
  summary_->setText(summaryOf(pasted_));
  for (QAbstractButton* const button : buttons_->buttons()) {
    if (buttons_->buttonRole(button) == QDialogButtonBox::AcceptRole) {
      button->setEnabled(!pasted_.inputs.isEmpty());
    }
  }
}

}  // namespace playerx::window
