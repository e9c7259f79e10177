#include "playerx/window/shell/WindowDialogs.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFileDialog>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>

#include "playerx/window/dialogs/AddAddressesDialog.h"
#include "playerx/window/dialogs/PreferencesDialog.h"
#include "playerx/window/model/Verb.h"
#include "playerx/window/view/Icons.h"

namespace playerx::window {

namespace {

QMessageBox* makeBox(QWidget& window, QMessageBox::Icon icon, const QString& text) {
  auto* const box = new QMessageBox(&window);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setIcon(icon);
  box->setTextFormat(Qt::PlainText);
  box->setText(text);
  return box;
}

}  // namespace

WindowDialogs::WindowDialogs(QWidget& window) : QObject(&window), window_(window) {}

void WindowDialogs::askForAddresses() {
  const QMimeData* const data = QApplication::clipboard()->mimeData();
  const bool isOffered = data != nullptr && holdsInput(*data);
  auto* const dialog = new AddAddressesDialog(isOffered ? data->text() : QString(), &window_);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QDialog::accepted, this,
          [this, dialog] { Q_EMIT inputsGiven(dialog->inputs()); });
  dialog->open();
}

void WindowDialogs::askForTickets() {
  auto* const dialog =
      new QFileDialog(&window_, tr("Add tickets"), QString(), tr("Tickets (*.tix);;All files (*)"));
  dialog->setFileMode(QFileDialog::ExistingFiles);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QFileDialog::filesSelected, this, &WindowDialogs::inputsGiven);
  dialog->open();
}

void WindowDialogs::askForPreferences(const QueuePreferences& queue,
                                      const WindowPreferences& window) {
  auto* const dialog = new PreferencesDialog(queue, window, &window_);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QDialog::accepted, this, [this, dialog] {
    Q_EMIT preferencesGiven(dialog->queuePreferences(), dialog->windowPreferences());
  });
  dialog->open();
}

void WindowDialogs::askAboutDeletion(const QList<FilmId>& films, const QString& title) {
  const QString text = title.isEmpty() ? tr("Delete %n film(s) from the disk?", nullptr,
                                            static_cast<int>(films.size()))
                                       : tr("Delete “%1” from the disk?").arg(title);
  QMessageBox* const box = makeBox(window_, QMessageBox::Question, text);
  QPushButton* const remove = box->addButton(tr("Delete"), QMessageBox::DestructiveRole);
  box->setDefaultButton(box->addButton(QMessageBox::Cancel));
  connect(remove, &QPushButton::clicked, this, [this, films] { Q_EMIT deletionConfirmed(films); });
  box->open();
}

void WindowDialogs::askAboutClosing(bool canStay) {
  QMessageBox* const box =
      makeBox(window_, QMessageBox::Question, tr("Films are still being downloaded."));
  box->setInformativeText(canStay ? tr("They can go on in the background. When the player quits, "
                                       "they go on at its next start.")
                                  : tr("When the player quits, they go on at its next start."));
  auto* const remember = new QCheckBox(tr("&Do not ask again"), box);
  box->setCheckBox(remember);
  const auto offer = [&](const QString& text, WindowPreferences::Closing closing) {
    QPushButton* const button = box->addButton(text, QMessageBox::AcceptRole);
    connect(button, &QPushButton::clicked, this,
            [this, remember, closing] { Q_EMIT closingChosen(closing, remember->isChecked()); });
    return button;
  };
  QPushButton* const quit = offer(tr("&Quit"), WindowPreferences::kQuit);
  QPushButton* const stay =
      canStay ? offer(tr("&Go on in the background"), WindowPreferences::kGoOnInTray) : quit;
  box->setDefaultButton(stay);
  box->addButton(QMessageBox::Cancel);
  box->open();
}

void WindowDialogs::tellAbout() {
  QMessageBox* const box =
      makeBox(window_, QMessageBox::NoIcon, QApplication::applicationDisplayName());
  box->setWindowTitle(plainText(Verb::kAbout));
  const int side = 4 * window_.fontMetrics().height();
  box->setIconPixmap(applicationIcon().pixmap(QSize(side, side), window_.devicePixelRatioF()));
  box->setInformativeText(tr("Version %1. Downloads films and plays them while they arrive.")
                              .arg(QApplication::applicationVersion()));
  box->open();
}

}  // namespace playerx::window
