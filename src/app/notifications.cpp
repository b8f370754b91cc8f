#include "app/notifications.h"

#include <QPointer>
#include <QUuid>

namespace zemrak {

Notifications::Notifications(Notifier &notifier, QObject *parent)
    : QObject(parent)
    , m_notifier(notifier)
{
}

void Notifications::refresh()
{
    m_notifier.status([self = QPointer(this)](NotificationStatus status) {
        if (self && std::exchange(self->m_status, status) != status)
            Q_EMIT self->statusChanged();
    });
}

void Notifications::request(std::function<void(bool granted)> done)
{
    m_notifier.requestPermission([self = QPointer(this), done = std::move(done)](bool granted, const QString &) {
        if (self)
            self->refresh();
        if (done)
            done(granted);
    });
}

void Notifications::postTest()
{
    m_notifier.post(QUuid::createUuid().toString(QUuid::WithoutBraces), QStringLiteral("Zemrak Printer"),
        QStringLiteral("الإشعارات تعمل ✓ سنخبرك هنا عند أي مشكلة في الطباعة."), false);
}

} // namespace zemrak
