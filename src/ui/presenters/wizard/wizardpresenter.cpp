#include "ui/presenters/wizard/wizardpresenter.h"

#include <QPointer>

namespace zemrak {

namespace {

enum class Step
{
    Login,
    Notifications,
    Safari,
    Network
};

} // namespace

WizardPresenter::WizardPresenter(const WizardParts &parts, QObject *parent)
    : QObject(parent)
    , m_parts(parts)
{
}

QString WizardPresenter::counter() const
{
    return isSummary() ? QString() : QStringLiteral("الخطوة %1 من %2").arg(m_step + 1).arg(steps);
}

QVariantMap WizardPresenter::current() const
{
    if (isSummary())
        return {};
    const WizardStep &step = wizardSteps().at(m_step);
    return {{QStringLiteral("icon"), step.icon}, {QStringLiteral("colors"), step.colors},
        {QStringLiteral("title"), step.title}, {QStringLiteral("text"), step.text}, {QStringLiteral("note"), step.note},
        {QStringLiteral("noteIcon"), QStringLiteral("info.circle.fill")},
        {QStringLiteral("noteColor"), QStringLiteral("#fbbf24")}, {QStringLiteral("allow"), step.allow},
        {QStringLiteral("skip"), step.skip}, {QStringLiteral("waiting"), QStringLiteral("بانتظارك…")}};
}

QVariantMap WizardPresenter::summaryPage() const
{
    return {{QStringLiteral("icon"), QStringLiteral("checkmark")},
        {QStringLiteral("colors"), QStringList{QStringLiteral("#4ade80"), QStringLiteral("#16a34a")}},
        {QStringLiteral("title"), QStringLiteral("اكتمل الإعداد")},
        {QStringLiteral("text"), QStringLiteral("يمكنك تغيير أي اختيار لاحقًا من الإعدادات ← معالج الإعداد الأولي.")},
        {QStringLiteral("button"), QStringLiteral("ابدأ الاستخدام")}};
}

QVariantList WizardPresenter::outcomes() const
{
    QVariantList list;
    for (int i = 0; i < steps; ++i)
        list.append(QVariantMap{{QStringLiteral("title"), wizardSteps().at(i).title},
            {QStringLiteral("text"), wizardChoiceText(choice(i))},
            {QStringLiteral("color"), wizardChoiceColor(choice(i))}});
    return list;
}

void WizardPresenter::allow()
{
    if (m_busy || isSummary())
        return;
    setBusy(true);
    switch (Step(m_step)) {
    case Step::Login:
        m_parts.login.setLaunchAtLogin(true);
        settler(WizardChoice::Failed)(m_parts.login.launchAtLogin());
        break;
    // A refusal counts as a choice of the person, not as a failure.
    case Step::Notifications:
        m_parts.notifications.request(settler(WizardChoice::Skipped));
        break;
    case Step::Safari:
        m_parts.trust.trustForSafari(settler(WizardChoice::Skipped));
        break;
    case Step::Network:
        // Whatever it finds: the search makes the system ask the person for leave.
        m_parts.commands.scanBonjour(
            [done = settler(WizardChoice::Enabled)](const auto &, const QString &) { done(true); });
        break;
    }
}

std::function<void(bool)> WizardPresenter::settler(WizardChoice otherwise)
{
    return [self = QPointer(this), step = m_step, otherwise](bool ok) {
        if (self)
            self->settle(step, ok ? WizardChoice::Enabled : otherwise);
    };
}

void WizardPresenter::settle(int step, WizardChoice choice)
{
    if (step == m_step) {
        setChoice(step, choice);
        setBusy(false);
        next();
    } else if (choice == WizardChoice::Enabled) {
        setChoice(step, choice); // skipped while it was under way, and yet it came about
    }
}

void WizardPresenter::skip()
{
    if (isSummary())
        return;
    setChoice(m_step, WizardChoice::Skipped);
    setBusy(false);
    next();
}

void WizardPresenter::next()
{
    ++m_step;
    Q_EMIT stepChanged();
}

void WizardPresenter::finish()
{
    if (isSummary())
        Q_EMIT finished();
}

void WizardPresenter::setBusy(bool busy)
{
    if (std::exchange(m_busy, busy) != busy)
        Q_EMIT busyChanged();
}

void WizardPresenter::setChoice(int step, WizardChoice choice)
{
    if (std::exchange(m_choices.at(size_t(step)), choice) != choice)
        Q_EMIT outcomesChanged();
}

} // namespace zemrak
