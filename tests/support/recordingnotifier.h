#pragma once

#include "health/notifier.h"

namespace zemrak::test {

/// Keeps what it is told to post and to take back.
class RecordingNotifier final : public Notifier
{
public:
    struct Posted
    {
        QString id;
        QString title;
        QString body;
        bool critical = false;
        bool operator==(const Posted &) const = default;
    };

    void install() override { }
    void onClicked(Clicked clicked) override { click = std::move(clicked); }
    void status(StatusDone done) override { done(authorization); }
    void requestPermission(PermissionDone done) override
    {
        if (holdPermission)
            asked = std::move(done);
        else
            done(true, {});
    }
    void post(const QString &id, const QString &title, const QString &body, bool critical) override
    {
        posted.append({id, title, body, critical});
    }
    void retract(const QStringList &ids) override { retracted.append(ids); }

    NotificationStatus authorization = NotificationStatus::Authorized;
    QList<Posted> posted;
    QList<QStringList> retracted;
    Clicked click;
    bool holdPermission = false;
    PermissionDone asked; ///< the last question that was held
};

} // namespace zemrak::test
