#pragma once

#include "soak/adminlink.h"
#include "soak/figures.h"
#include "soak/till.h"
#include "support/displaywindow.h"
#include "support/notificationserver.h"
#include "support/privatebus.h"
#include "support/privatedisplay.h"
#include "support/traypanel.h"

#include <QHash>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <memory>

namespace zemrak::soak {

/// The program of a bundle in a session of its own: bus, display, panel and notification server, gone with this object.
class Shop
{
public:
    Shop();
    ~Shop();

    /// Starts the program and closes the window that it shows. Throws Ended when it does not come up.
    void open(const QString &bundle);
    /// Counts what does not come about in time, and says so; throws Ended when the program has gone.
    bool expect(const char *what, const std::function<bool()> &holds, std::chrono::milliseconds patience);
    [[nodiscard]] int failures() const { return m_failures; }

    /// Switches `till` on and has the service know it.
    void addPrinter(const QString &name, Till &till);
    /// Asks for a receipt of this number; whether the service took the job.
    bool order(const QString &printer, const QByteArray &number);
    void askForWindow() const; ///< as a launcher does

    [[nodiscard]] qint64 programId() const { return m_program.processId(); }
    [[nodiscard]] qint64 serviceId() const; ///< 0 while there is none
    [[nodiscard]] bool answers(); ///< the service does
    /// What the program says of itself; empty when it says nothing.
    [[nodiscard]] QJsonObject status() const;
    [[nodiscard]] QString stateOf(const QString &printer) const;
    /// What a process costs when nothing passing is counted; waits a few seconds for that, less when it is `wanted`
    /// before.
    [[nodiscard]] Figures settled(qint64 processId, const Figures &wanted) const;

    [[nodiscard]] const test::DisplayWindow &window() const { return m_window; }
    [[nodiscard]] test::TrayPanel &panel() { return m_panel; }
    void loseNotifications(); ///< their server goes
    void findNotifications(); ///< another comes
    [[nodiscard]] qsizetype notes() const; ///< posted so far, at any server

private:
    [[nodiscard]] QJsonObject reportOf(const QString &printer) const;

    QTemporaryDir m_home;
    test::PrivateBus m_bus;
    test::PrivateDisplay m_display;
    test::DisplayWindow m_window;
    test::TrayPanel m_panel;
    std::unique_ptr<test::NotificationServer> m_notifications;
    QDBusConnection m_observer;
    AdminLink m_service;
    QProcess m_program;
    QHash<QString, QString> m_ids; ///< of the printers, by their names
    qsizetype m_notes = 0; ///< posted at servers that have gone
    int m_failures = 0;
};

/// To one process; none when there is none.
void send(qint64 processId, int signal);

} // namespace zemrak::soak
