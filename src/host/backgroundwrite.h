#pragma once

#include <QObject>
#include <QString>

#include <functional>

namespace zemrak {

/// Runs `write` on a worker thread, for a place that may be slow or hang: a stick, a share. What `write` returns, the
/// fault or nothing, goes to `done` on this thread, which is the one of `context`; a context that is gone is told
/// nothing, and the writing goes on without it. `write` captures by value.
void writeInBackground(
    QObject *context, std::function<QString()> write, std::function<void(const QString &fault)> done);

} // namespace zemrak
