#pragma once

#include "model/agentstate.h"
#include "model/scanresult.h"
#include "ui/presenters/overview/scanresultmodel.h"

#include <QObject>
#include <QString>

namespace zemrak {

/// What the overview is computed from.
struct OverviewFacts
{
    const AgentState *state = nullptr; ///< null: the service does not answer
    bool scanning = false;
    QString scanStep; ///< of the check under way or of the last one; empty: there was none
    std::optional<ScanResult> scanResult;
    qint64 now = 0; ///< milliseconds since 1970-01-01 UTC
};

[[nodiscard]] QString heroColor(const OverviewFacts &facts);
[[nodiscard]] QString heroTitle(const OverviewFacts &facts);
[[nodiscard]] QString heroSubtitle(const OverviewFacts &facts);
[[nodiscard]] qint64 connectedPrinters(const AgentState *state);
/// Jobs last changed on the day that is today where this computer stands.
[[nodiscard]] qint64 jobsToday(const AgentState *state, qint64 now);

/// The first page: whether printing works, in one sentence, and the counters. Main thread only.
class OverviewPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString heroColor READ heroColor NOTIFY changed)
    Q_PROPERTY(QString heroTitle READ heroTitle NOTIFY changed)
    Q_PROPERTY(QString heroSubtitle READ heroSubtitle NOTIFY changed)
    Q_PROPERTY(QString ringHint READ ringHint NOTIFY changed)
    Q_PROPERTY(QString ringHoverHint READ ringHoverHint NOTIFY changed)
    Q_PROPERTY(QString printersValue READ printersValue NOTIFY changed)
    Q_PROPERTY(QString sitesValue READ sitesValue NOTIFY changed)
    Q_PROPERTY(QString jobsValue READ jobsValue NOTIFY changed)
    Q_PROPERTY(QString scanMessage READ scanMessage NOTIFY changed)
    Q_PROPERTY(bool showsScan READ showsScan NOTIFY changed)
    Q_PROPERTY(zemrak::ScanResultModel *scanResults READ scanResults CONSTANT)

public:
    using QObject::QObject;

    /// Tells of a change only when a text or colour is another one.
    void show(const OverviewFacts &facts);

    [[nodiscard]] QString heroColor() const { return m_shown.heroColor; }
    [[nodiscard]] QString heroTitle() const { return m_shown.heroTitle; }
    [[nodiscard]] QString heroSubtitle() const { return m_shown.heroSubtitle; }
    [[nodiscard]] QString ringHint() const; ///< under the ring
    [[nodiscard]] QString ringHoverHint() const; ///< on the ring, while the pointer is over it
    [[nodiscard]] QString printersValue() const { return m_shown.printers; }
    [[nodiscard]] QString sitesValue() const { return m_shown.sites; }
    [[nodiscard]] QString jobsValue() const { return m_shown.jobs; }
    /// In place of the results; empty: the results are shown, or there was no check.
    [[nodiscard]] QString scanMessage() const { return m_shown.scanMessage; }
    /// A check runs, or there was one.
    [[nodiscard]] bool showsScan() const { return m_shown.showsScan; }
    [[nodiscard]] ScanResultModel *scanResults() { return &m_scanResults; }

Q_SIGNALS:
    void changed();

private:
    struct Shown
    {
        QString heroColor;
        QString heroTitle;
        QString heroSubtitle;
        QString printers;
        QString sites;
        QString jobs;
        QString scanMessage;
        bool scanning = false;
        bool showsScan = false;

        bool operator==(const Shown &) const = default;
    };

    Shown m_shown;
    ScanResultModel m_scanResults;
};

} // namespace zemrak
