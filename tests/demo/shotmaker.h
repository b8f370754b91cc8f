#pragma once

#include "demo/shots.h"
#include "demo/stage.h"
#include "support/manualclock.h"
#include "ui/qmlwindow.h"

#include <QDir>

namespace zemrak::test {

/// Draws every shot and the gallery into a folder, each in light and in dark, at a time that stands still.
class ShotMaker
{
public:
    ShotMaker(const QString &folder, double textScale);

    /// False: fault() says what went wrong. `prefix` empty: all.
    [[nodiscard]] bool make(const QString &prefix);
    [[nodiscard]] QString fault() const { return m_fault; }

private:
    bool makeShot(const Shot &shot, bool dark);
    bool makeGallery(bool dark);
    bool save(QQuickWindow &window, const QString &name, bool dark);

    QDir m_folder;
    QString m_fault;
    ManualClock m_clock;
    Stage m_stage{m_clock};
    QmlWindow m_window{m_stage.services()};
};

} // namespace zemrak::test
