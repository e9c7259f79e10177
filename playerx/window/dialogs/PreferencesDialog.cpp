#include "playerx/window/dialogs/PreferencesDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "playerx/window/view/Shades.h"

namespace playerx::window {

namespace {

constexpr int kKilo = 1000;
constexpr int kFirstLimit = 1000;          // kB/s, what a new limit begins with
constexpr int kHighestLimit = 10'000'000;  // kB/s

QWidget* withButton(QLineEdit* edit, QPushButton* button, QWidget* parent) {
  auto* const pair = new QWidget(parent);
  auto* const row = new QHBoxLayout(pair);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(edit, 1);
  row->addWidget(button);
  pair->setFocusProxy(edit);
  return pair;
}

QFormLayout* makeForm(QWidget* page) {
  auto* const form = new QFormLayout(page);
  form->setContentsMargins(16, 16, 16, 16);
  form->setHorizontalSpacing(16);
  form->setVerticalSpacing(8);
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  return form;
}

bool isWebAddress(const QString& text) {
  const QUrl url(text, QUrl::StrictMode);
  const bool isWeb =
      url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
  return url.isValid() && isWeb && !url.host().isEmpty();
}

}  // namespace

QString complaintAbout(const QueuePreferences& preferences) {
  if (!QDir::isAbsolutePath(preferences.mediaFolder)) {
    return PreferencesDialog::tr("Give the whole path of the folder for films, from / on.");
  }
  if (preferences.proxy == QueuePreferences::kOwnProxy && !isWebAddress(preferences.proxyAddress)) {
    return PreferencesDialog::tr("Name the proxy as http://host:port.");
  }
  if (!preferences.servicesAddress.isEmpty() && !isWebAddress(preferences.servicesAddress)) {
    return PreferencesDialog::tr("The address of the online services begins with https://.");
  }
  return {};
}

PreferencesDialog::PreferencesDialog(const QueuePreferences& queue, const WindowPreferences& window,
                                     QWidget* parent)
    : QDialog(parent),
      folder_(new QLineEdit(this)),
      limited_(new QCheckBox(tr("&Limit the speed to"), this)),
      limit_(new QSpinBox(this)),
      proxy_(new QComboBox(this)),
      proxyAddress_(new QLineEdit(this)),
      authorities_(new QLineEdit(this)),
      services_(new QLineEdit(this)),
      playAlone_(new QCheckBox(tr("&Play a film as soon as enough of it is there"), this)),
      tellDone_(new QCheckBox(tr("Tell when a film is &done"), this)),
      tellFailed_(new QCheckBox(tr("Tell when a film has &failed"), this)),
      closing_(new QComboBox(this)),
      complaint_(new QLabel(this)),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)) {
  setWindowTitle(tr("Preferences"));
  arrange();
  load(queue, window);
  connectParts();
  check();
  // One that is set takes the place of the layout's.
  setMinimumWidth(std::max(68 * fontMetrics().averageCharWidth(), minimumSizeHint().width()));
}

void PreferencesDialog::arrange() {
  auto* const tabs = new QTabWidget(this);
  tabs->addTab(makeDownloadsPage(), tr("D&ownloads"));
  tabs->addTab(makeNetworkPage(), tr("&Network"));
  tabs->addTab(makeWindowPage(), tr("&Window"));
  complaint_->setTextFormat(Qt::PlainText);
  complaint_->setWordWrap(true);
  QPalette warning = complaint_->palette();
  warning.setColor(QPalette::WindowText, Shades::of(warning, false, QPalette::Active).warning);
  complaint_->setPalette(warning);

  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(16, 16, 16, 16);
  column->setSpacing(8);
  column->addWidget(tabs, 1);
  column->addWidget(complaint_);
  column->addWidget(buttons_);
}

void PreferencesDialog::connectParts() {
  connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
  for (QLineEdit* const edit : {folder_, proxyAddress_, services_}) {
    connect(edit, &QLineEdit::textChanged, this, &PreferencesDialog::check);
  }
  connect(proxy_, &QComboBox::currentIndexChanged, this, &PreferencesDialog::check);
  connect(limited_, &QCheckBox::toggled, limit_, &QWidget::setEnabled);
}

QWidget* PreferencesDialog::makeDownloadsPage() {
  auto* const page = new QWidget(this);
  QFormLayout* const form = makeForm(page);
  auto* const choose = new QPushButton(tr("&Choose…"), page);
  connect(choose, &QPushButton::clicked, this, &PreferencesDialog::chooseFolder);
  form->addRow(tr("&Folder for films:"), withButton(folder_, choose, page));
  folder_->setAccessibleName(tr("Folder for films"));

  limit_->setRange(1, kHighestLimit);
  limit_->setSingleStep(kFirstLimit / 10);
  limit_->setGroupSeparatorShown(true);
  limit_->setSuffix(tr(" kB/s"));
  limit_->setAccessibleName(tr("Highest speed"));
  auto* const pair = new QWidget(page);
  auto* const row = new QHBoxLayout(pair);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(limited_);
  row->addWidget(limit_);
  row->addStretch(1);
  form->addRow(pair);
  form->addRow(playAlone_);
  return page;
}

QWidget* PreferencesDialog::makeNetworkPage() {
  auto* const page = new QWidget(this);
  QFormLayout* const form = makeForm(page);
  proxy_->addItem(tr("As the system says"), QueuePreferences::kSystemProxy);
  proxy_->addItem(tr("None"), QueuePreferences::kNoProxy);
  proxy_->addItem(tr("This one:"), QueuePreferences::kOwnProxy);
  proxyAddress_->setPlaceholderText(QStringLiteral("http://proxy.example:8080"));
  proxyAddress_->setAccessibleName(tr("Address of the proxy"));
  form->addRow(tr("&Proxy:"), proxy_);
  form->addRow(QString(), proxyAddress_);
  form->addRow(QString(), new QLabel(tr("Another proxy is used from the next start on."), page));

  auto* const choose = new QPushButton(tr("C&hoose…"), page);
  connect(choose, &QPushButton::clicked, this, &PreferencesDialog::chooseAuthorities);
  authorities_->setPlaceholderText(tr("Those of the system"));
  authorities_->setAccessibleName(tr("Certificate authorities"));
  form->addRow(tr("Certificate &authorities:"), withButton(authorities_, choose, page));
  services_->setPlaceholderText(QStringLiteral("https://services.example"));
  form->addRow(tr("Online &services:"), services_);
  return page;
}

QWidget* PreferencesDialog::makeWindowPage() {
  auto* const page = new QWidget(this);
  QFormLayout* const form = makeForm(page);
  form->addRow(tellDone_);
  form->addRow(tellFailed_);
  closing_->addItem(tr("Ask me"), WindowPreferences::kAsk);
  closing_->addItem(tr("Go on in the background"), WindowPreferences::kGoOnInTray);
  closing_->addItem(tr("Quit"), WindowPreferences::kQuit);
  form->addRow(tr("&Closing while films arrive:"), closing_);
  return page;
}

void PreferencesDialog::load(const QueuePreferences& queue, const WindowPreferences& window) {
  folder_->setText(QDir::toNativeSeparators(queue.mediaFolder));
  limited_->setChecked(queue.speedLimit > 0);
  limit_->setValue(queue.speedLimit > 0 ? static_cast<int>(queue.speedLimit / kKilo) : kFirstLimit);
  limit_->setEnabled(queue.speedLimit > 0);
  proxy_->setCurrentIndex(proxy_->findData(queue.proxy));
  proxyAddress_->setText(queue.proxyAddress);
  authorities_->setText(QDir::toNativeSeparators(queue.authorityFile));
  services_->setText(queue.servicesAddress);
  playAlone_->setChecked(window.playsAutomatically);
  tellDone_->setChecked(window.tellsWhenDone);
  tellFailed_->setChecked(window.tellsWhenFailed);
  closing_->setCurrentIndex(closing_->findData(window.closing));
}

QueuePreferences PreferencesDialog::queuePreferences() const {
  QueuePreferences queue;
  queue.mediaFolder = QDir::cleanPath(QDir::fromNativeSeparators(folder_->text().trimmed()));
  queue.speedLimit = limited_->isChecked() ? static_cast<quint64>(limit_->value()) * kKilo : 0;
  queue.proxy = static_cast<QueuePreferences::Proxy>(proxy_->currentData().toInt());
  queue.proxyAddress = proxyAddress_->text().trimmed();
  queue.authorityFile = QDir::fromNativeSeparators(authorities_->text().trimmed());
  queue.servicesAddress = services_->text().trimmed();
  return queue;
}

WindowPreferences PreferencesDialog::windowPreferences() const {
  WindowPreferences window;
  window.playsAutomatically = playAlone_->isChecked();
  window.tellsWhenDone = tellDone_->isChecked();
  window.tellsWhenFailed = tellFailed_->isChecked();
  window.closing = static_cast<WindowPreferences::Closing>(closing_->currentData().toInt());
  return window;
}

void PreferencesDialog::chooseFolder() {
  auto* const dialog = new QFileDialog(this, tr("Folder for films"), folder_->text());
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QFileDialog::fileSelected, folder_, &QLineEdit::setText);
  dialog->open();
}

void PreferencesDialog::chooseAuthorities() {
  auto* const dialog = new QFileDialog(this, tr("Certificate authorities"), authorities_->text(),
                                       tr("Certificates (*.pem *.crt);;All files (*)"));
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QFileDialog::fileSelected, authorities_, &QLineEdit::setText);
  dialog->open();
}

void PreferencesDialog::check() {
  const QueuePreferences queue = queuePreferences();
  proxyAddress_->setEnabled(queue.proxy == QueuePreferences::kOwnProxy);
  const QString complaint = complaintAbout(queue);
  complaint_->setText(complaint);
  buttons_->button(QDialogButtonBox::Ok)->setEnabled(complaint.isEmpty());
}

}  // namespace playerx::window
