#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace zemrak {

/// How a step of the first-run wizard came out.
enum class WizardChoice
{
    None,
    Enabled,
    Skipped,
    Failed
};

/// What a step of the first-run wizard shows.
struct WizardStep
{
    QString icon; ///< symbol name
    QStringList colors; ///< the two of its gradient
    QString title;
    QString text;
    QString note;
    QString allow; ///< text of the button that does it
    QString skip;
};

/// The four steps: start with the computer, notifications, Safari, local network.
[[nodiscard]] const QList<WizardStep> &wizardSteps();

[[nodiscard]] QString wizardChoiceText(WizardChoice choice);
[[nodiscard]] QString wizardChoiceColor(WizardChoice choice);

} // namespace zemrak
