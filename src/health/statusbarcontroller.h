#pragma once

#include "health/statusitem.h"

#include <QImage>
#include <QObject>

#include <array>
#include <optional>

namespace zemrak {

/// Turns the health of the service into what the status item shows, and tells what the person chose there. Main
/// thread only.
class StatusBarController : public QObject
{
    Q_OBJECT

public:
    /// The item must outlive this object. A null logo gets a symbol in its place.
    StatusBarController(StatusItem &item, const QImage &logo, QObject *parent = nullptr);
    ~StatusBarController() override;

    /// To be called at the start and after every poll; the item is touched only if what it shows is new.
    void update(const HealthSummary &health, bool launchAtLogin, bool loginNeedsApproval);

Q_SIGNALS:
    void commandChosen(zemrak::StatusCommand command);

private:
    [[nodiscard]] const QIcon &icon(bool problem);

    StatusItem &m_item;
    QImage m_logo;
    std::array<QIcon, 2> m_icons; ///< fine, problem; each is drawn when it is first shown
    std::optional<StatusContent> m_shown;
};

} // namespace zemrak
