#pragma once

#include <QStringList>

class QMimeData;

namespace playerx::window {

/// What a person hands over by pasting or dropping, sorted roughly: the queue looks closer.
struct PastedInputs {
  QStringList inputs;   ///< web addresses and paths of ticket files, each once, in order
  QStringList leftOut;  ///< lines that are neither
};

/// Reads text line by line; a line may hold several addresses separated by blanks. Empty lines and
/// those that begin with "#" are passed over. Linear in the length of the text.
PastedInputs inputsInText(const QString& text);

/// Reads dropped or copied data: links and files, or else text.
PastedInputs inputsInData(const QMimeData& data);

/// Whether there is something to download in the data; of a long text only the beginning is read.
bool holdsInput(const QMimeData& data);

}  // namespace playerx::window
