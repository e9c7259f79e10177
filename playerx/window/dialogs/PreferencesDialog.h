#pragma once

#include <QDialog>

#include "playerx/window/model/WindowPreferences.h"
#include "playerx/window/queue/QueueMessages.h"

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace playerx::window {

/// Shows and changes the preferences of the queue and of the window.
class PreferencesDialog : public QDialog {
  Q_OBJECT

 public:
  PreferencesDialog(const QueuePreferences& queue, const WindowPreferences& window,
                    QWidget* parent = nullptr);

  QueuePreferences queuePreferences() const;
  WindowPreferences windowPreferences() const;

 private:
  void arrange();
  QWidget* makeDownloadsPage();
  QWidget* makeNetworkPage();
  QWidget* makeWindowPage();
  void load(const QueuePreferences& queue, const WindowPreferences& window);
  void connectParts();
  void chooseFolder();
  void chooseAuthorities();
  void check();

  QLineEdit* const folder_;
  QCheckBox* const limited_;
  QSpinBox* const limit_;  // kB/s
  QComboBox* const proxy_;
  QLineEdit* const proxyAddress_;
  QLineEdit* const authorities_;
  QLineEdit* const services_;
  QCheckBox* const playAlone_;
  QCheckBox* const tellDone_;
  QCheckBox* const tellFailed_;
  QComboBox* const closing_;
  QLabel* const complaint_;
  QDialogButtonBox* const buttons_;
};

/// Why these preferences cannot be used, one sentence; empty when they can.
QString complaintAbout(const QueuePreferences& preferences);

}  // namespace playerx::window
