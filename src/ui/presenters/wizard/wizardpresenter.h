#pragma once

#include "app/commands.h"
#include "app/notifications.h"
#include "host/httpstrust.h"
#include "host/launchatlogin.h"
#include "ui/presenters/wizard/wizardstep.h"

#include <QObject>
#include <QVariant>

#include <array>
#include <functional>

namespace zemrak {

/// What the first-run wizard asks of the application, a part for each step. All of it outlives the wizard.
struct WizardParts
{
    LaunchAtLogin &login;
    Notifications &notifications;
    HttpsTrust &trust;
    Commands &commands;
};

/// The first-run wizard: four steps forward, each done or skipped, then a summary. Main thread only.
class WizardPresenter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int step READ step NOTIFY stepChanged)
    Q_PROPERTY(bool busy READ isBusy NOTIFY busyChanged)
    Q_PROPERTY(bool summary READ isSummary NOTIFY stepChanged)
    Q_PROPERTY(QString counter READ counter NOTIFY stepChanged)
    Q_PROPERTY(QVariantMap current READ current NOTIFY stepChanged)
    Q_PROPERTY(QVariantMap summaryPage READ summaryPage CONSTANT)
    Q_PROPERTY(QVariantList outcomes READ outcomes NOTIFY outcomesChanged)

public:
    static constexpr int steps = 4;

    explicit WizardPresenter(const WizardParts &parts, QObject *parent = nullptr);

    /// From 0; `steps` is the summary.
    [[nodiscard]] int step() const { return m_step; }
    /// What was allowed is under way.
    [[nodiscard]] bool isBusy() const { return m_busy; }
    [[nodiscard]] bool isSummary() const { return m_step == steps; }
    [[nodiscard]] WizardChoice choice(int step) const { return m_choices.at(size_t(step)); }

    /// "Step 1 of 4" in words; empty on the summary.
    [[nodiscard]] QString counter() const;
    /// icon, colors, title, text, note, noteIcon, noteColor, allow, skip, waiting; empty on the summary.
    [[nodiscard]] QVariantMap current() const;
    /// icon, colors, title, text, button.
    [[nodiscard]] QVariantMap summaryPage() const;
    /// For each step title, text and color of how it came out.
    [[nodiscard]] QVariantList outcomes() const;

    Q_INVOKABLE void allow();
    /// Also while an answer is awaited, as it may never come.
    Q_INVOKABLE void skip();
    Q_INVOKABLE void finish();

Q_SIGNALS:
    void stepChanged();
    void busyChanged();
    void outcomesChanged();
    /// The person has seen the summary and wants to begin.
    void finished();

private:
    void next();
    void setBusy(bool busy);
    void setChoice(int step, WizardChoice choice);
    void settle(int step, WizardChoice choice);
    [[nodiscard]] std::function<void(bool)> settler(WizardChoice otherwise);

    WizardParts m_parts;
    std::array<WizardChoice, steps> m_choices{};
    int m_step = 0;
    bool m_busy = false;
};

} // namespace zemrak
