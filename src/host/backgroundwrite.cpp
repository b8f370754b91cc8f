#include "host/backgroundwrite.h"

#include <QFutureWatcher>
#include <QPromise>
#include <QThreadPool>

#include <memory>

namespace zemrak {

void writeInBackground(QObject *context, std::function<QString()> write, std::function<void(const QString &fault)> done)
{
    const auto promise = std::make_shared<QPromise<QString>>();
    // Not QFuture::then(context): that looks at the context from the worker, which may be while it is being destroyed.
    auto *watcher = new QFutureWatcher<QString>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done(watcher->result());
    });
    watcher->setFuture(promise->future());
    QThreadPool::globalInstance()->start([promise, write = std::move(write)] {
        promise->start();
        promise->addResult(write());
        promise->finish();
    });
}

} // namespace zemrak
