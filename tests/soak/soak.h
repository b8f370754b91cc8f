#pragma once

#include "soak/adminlink.h"
#include "soak/figures.h"
#include "soak/report.h"
#include "soak/shopwindow.h"
#include "soak/till.h"
#include "support/notificationserver.h"
#include "support/privatebus.h"
#include "support/privatedisplay.h"
#include "support/traypanel.h"

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <memory>

namespace zemrak::soak {

/// How much of a week is lived through.
struct Plan
{
    int rounds = 100; ///< the service is killed in the first half of them and left alone in the second
    int openings = 5; ///< of the window, each round
    int kills = 4; ///< of the service, each round of the first half
    int suspendEvery = 10; ///< rounds
    std::chrono::seconds suspend{15};
    std::chrono::milliseconds rest{0}; ///< how long a round takes at least
    std::chrono::seconds calm{40}; ///< before measuring: idle threads end after half a minute
};

/// A shop's week: the program of a bundle in a session of its own, with a panel, a notification server and two
/// printers.
class Soak
{
public:
    Soak(const QString &bundle, const Plan &plan);
    ~Soak();

    /// Lives through it and tells. Throws Ended when the program has ended, or does not come up.
    void run(Report &report);

private:
    void start();
    void addPrinter(const QString &name, Till &till);
    void round(int number);
    void openAndClose();
    void restartPanel();
    void restartNotifications();
    void killService();
    void suspend();
    void printOn(const QString &printer, Till &till);
    void loseAndFindPrinter();
    void tell(Report &report) const;
    [[nodiscard]] Figures settled(qint64 (Soak::*processId)() const, const Figures &wanted) const;

    [[nodiscard]] qint64 programId() const { return m_program.processId(); }
    [[nodiscard]] qint64 serviceId() const;
    [[nodiscard]] QJsonObject status() const; ///< what the program says of itself; empty when it says nothing
    [[nodiscard]] bool answers();
    [[nodiscard]] QString stateOf(const QString &printer) const;
    /// Counts what does not come about in time, and says so; throws Ended when the program has gone.
    bool expect(const char *what, const std::function<bool()> &holds, std::chrono::milliseconds patience);

    const Plan m_plan;
    const QString m_bundle;
    QTemporaryDir m_home;
    test::PrivateBus m_bus;
    test::PrivateDisplay m_display;
    ShopWindow m_window;
    test::TrayPanel m_panel;
    std::unique_ptr<test::NotificationServer> m_notifications;
    QDBusConnection m_observer;
    AdminLink m_service;
    Till m_counter; ///< always on
    Till m_kitchen; ///< comes and goes
    QProcess m_program;

    Figures m_programBegin, m_programEnd, m_serviceBegin, m_serviceEnd;
    QList<qint64> m_recoveries; ///< milliseconds from a kill to the next answer
    QList<qint64> m_wakings; ///< milliseconds from the end of a suspension to the next answer
    QList<qint64> m_openingTimes; ///< milliseconds from asking for the window to seeing it
    int m_jobs = 0;
    int m_panels = 0;
    int m_servers = 0;
    int m_losses = 0;
    int m_failures = 0;
    qsizetype m_notes = 0; ///< posted at servers that have gone
};

} // namespace zemrak::soak
