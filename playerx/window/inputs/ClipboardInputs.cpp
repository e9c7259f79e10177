#include "playerx/window/inputs/ClipboardInputs.h"

#include <QClipboard>
#include <QGuiApplication>

#include "playerx/window/inputs/PastedInputs.h"

namespace playerx::window {

ClipboardInputs::ClipboardInputs(QObject* parent) : QObject(parent) {
  connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &ClipboardInputs::look);
  look();
}

QStringList ClipboardInputs::read() const {
  const QMimeData* const data = QGuiApplication::clipboard()->mimeData();
  return data == nullptr ? QStringList() : inputsInData(*data).inputs;
}

void ClipboardInputs::look() {
  const QMimeData* const data = QGuiApplication::clipboard()->mimeData();
  isUseful_ = data != nullptr && holdsInput(*data);
  Q_EMIT changed();
}

}  // namespace playerx::window
