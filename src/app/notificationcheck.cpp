#include "app/notificationcheck.h"

#include <QCoreApplication>

namespace zemrak {

void checkNotifications(Notifier &notifier, Clock &clock, const std::function<void(const QString &line)> &print)
{
    notifier.status([print](NotificationStatus status) {
        print(QStringLiteral("notif-status-before: %1 (0 notDetermined, 1 denied, 2 authorized)").arg(int(status)));
    });
    notifier.requestPermission([print, &clock](bool granted, const QString &error) {
        print(QStringLiteral("notif-granted: %1 error: %2")
                  .arg(granted ? QStringLiteral("true") : QStringLiteral("false"),
                      error.isEmpty() ? QStringLiteral("none") : error));
        clock.after(std::chrono::seconds(1), qApp, [] { QCoreApplication::quit(); });
    });
}

} // namespace zemrak
