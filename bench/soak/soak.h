#pragma once

#include "soak/figures.h"
#include "soak/report.h"
#include "soak/shop.h"
#include "soak/till.h"

#include <QList>
#include <QString>

#include <chrono>

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

/// A shop's week: jobs, two printers, and all that comes, goes, hangs and dies around them.
class Soak
{
public:
    Soak(QString bundle, const Plan &plan);

    /// Lives through it and tells. Throws Ended when the program has ended, or does not come up.
    void run(Report &report);

private:
    void round(int number);
    void openAndClose();
    void restartPanel();
    void restartNotifications();
    void killService();
    void suspend();
    [[nodiscard]] QByteArray nextNumber();
    void printOn(const QString &printer, const Till &till);
    void loseAndFindPrinter();
    void tell(Report &report) const;

    const QString m_bundle;
    const Plan m_plan;
    Till m_counter; ///< always on
    Till m_kitchen; ///< comes and goes
    Shop m_shop;

    Figures m_programBegin, m_programEnd, m_serviceBegin, m_serviceEnd;
    QList<qint64> m_recoveries; ///< milliseconds from a kill to the next answer
    QList<qint64> m_wakings; ///< milliseconds from the end of a suspension until all is well
    QList<qint64> m_openings; ///< milliseconds from asking for the window to seeing it
    int m_receipts = 0; ///< asked for
    int m_panels = 0;
    int m_servers = 0;
    int m_losses = 0;
};

} // namespace zemrak::soak
