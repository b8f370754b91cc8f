#pragma once

#include "app/adminchannel.h"
#include "app/alertfeed.h"
#include "app/commands.h"
#include "app/notifications.h"
#include "app/servicesupervisor.h"
#include "app/systemsettings.h"
#include "host/connectioncheck.h"
#include "host/diagnosticsreport.h"
#include "host/httpstrust.h"
#include "host/keepawake.h"
#include "host/updates.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/rows.h"
#include "support/testhost.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QTemporaryDir>

namespace zemrak::test {

/// The parts that presenters ask, on a computer that does nothing of itself, with a service that the test answers.
struct Parts
{
    ManualClock clock;
    RecordingService service;
    StatePoll poll{service, clock};
    Toast toast{clock};
    Commands commands{service, poll, toast, clock};

    QTemporaryDir home;
    UserDefaults defaults{home.filePath(QStringLiteral("settings.ini"))};
    FakeBundle files;
    TestHost computer;
    RecordingCommands oneShots;
    LaunchAtLogin login{computer.loginItem, defaults, clock, files.bundle().path()};
    Notifications notifications{computer.notifier};
    HttpsTrust trust{oneShots};
    AlertDelivery delivery{computer.notifier, clock, {}, [](const QStringList &) {}};
    AlertFeed feed{service, [] { return true; }, delivery, clock};
    ConnectionCheck check{service, clock};
    Updates updates{service, clock, files.bundle(), {}};
    SystemSettings systemSettings{computer.desktop, toast};
    KeepAwake awake{computer.activities, defaults};
    DiagnosticsReport diagnostics{service, computer.desktop, clock};
    ServiceLog log;
    ServiceSupervisor supervisor{files.bundle(), files.configDir(), clock, computer.childGuard, log};

    /// How many requests went there.
    [[nodiscard]] qsizetype sent(const char *path) const { return service.countTo(QLatin1String(path)); }
    /// The last body that went there.
    [[nodiscard]] QJsonObject body(const char *path) const { return service.lastTo(QLatin1String(path)); }
    /// Answers the oldest request to `path` that has no answer; false: there is none.
    bool answer(const char *path, const PrintService::Answer &body = "{}")
    {
        return service.release(QLatin1String(path), body);
    }
};

inline QJsonObject json(const char *text)
{
    return QJsonDocument::fromJson(text).object();
}

/// The cells of a row by the names of their roles, as one text with "|" between.
inline QString cells(const QAbstractItemModel &model, int row, const char *roles)
{
    QStringList texts;
    for (const QByteArray &role : QByteArray(roles).split(' '))
        texts.append(model.index(row, 0).data(model.roleNames().key(role, -1)).toString());
    return texts.join(u'|');
}

/// The cells of all rows, as one text with "|" between.
inline QString column(const QAbstractItemModel &model, const char *role)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(cells(model, row, role));
    return texts.join(u'|');
}

} // namespace zemrak::test
