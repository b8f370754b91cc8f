#pragma once

#include "demo/shots.h"
#include "demo/stage.h"
#include "support/manualclock.h"
#include "ui/window/shell/qmlwindow.h"

#include <QDir>

#include <memory>

namespace zemrak::test {

/// Draws every shot and the gallery into a folder, each in light and in dark, at a time that stands still. No picture
/// shows what another one has left.
class ShotMaker
{
public:
    ShotMaker(const QString &folder, double textScale);

    /// False: fault() says what went wrong. `prefix` empty: all.
    [[nodiscard]] bool make(const QString &prefix);
    [[nodiscard]] QString fault() const { return m_fault; }

private:
    struct Set
    {
        ManualClock clock;
        Stage stage{clock};
        QmlWindow window{stage.services()};
    };

    [[nodiscard]] std::unique_ptr<Set> makeSet(bool dark) const;
    bool makeShot(const Shot &shot, bool dark);
    bool makeGallery(bool dark);
    bool save(QQuickWindow &window, const QString &name, bool dark);

    QDir m_folder;
    double m_textScale;
    QString m_fault;
};

} // namespace zemrak::test
