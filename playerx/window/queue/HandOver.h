#pragma once

#include <QString>
#include <QStringList>

namespace playerx::window {

/// Has a window that serves the queue of this folder come to the front and add the inputs. False
/// when no window serves it, or when that does not answer within a moment. Waits; needs no event
/// loop.
bool handOver(const QString& dataFolder, const QStringList& inputs);

}  // namespace playerx::window
