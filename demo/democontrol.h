#pragma once

#include "demo/stage.h"
#include "ui/window/shell/qmlwindow.h"

#include <QObject>
#include <QQmlEngine>
#include <QStringList>

namespace zemrak::test {

/// What the buttons of the demo's own panel do.
class DemoControl : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QStringList situationTitles READ situationTitles CONSTANT)
    Q_PROPERTY(QStringList shotNames READ shotNames CONSTANT)

public:
    explicit DemoControl(Clock &clock);

    /// Shows panel and window. False: something cannot be built; the log says what.
    [[nodiscard]] bool open();
    void setTextScale(double scale) { m_window.appearance().overrideTextScale(scale); }

    [[nodiscard]] QStringList situationTitles() const;
    [[nodiscard]] QStringList shotNames() const;

    Q_INVOKABLE void enterSituation(int row);
    Q_INVOKABLE void openShot(int row);
    Q_INVOKABLE void openGallery();
    Q_INVOKABLE void chooseDark(bool dark) { m_window.appearance().overrideDark(dark); }
    Q_INVOKABLE void chooseTextScale(double scale) { setTextScale(scale); }
    Q_INVOKABLE void chooseReducedMotion(bool reduced) { m_window.appearance().overrideReducedMotion(reduced); }

private:
    [[nodiscard]] std::unique_ptr<QObject> build(const QString &file);

    Stage m_stage;
    QmlWindow m_window;
    std::unique_ptr<Timer> m_poll;
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QObject> m_panel;
    std::unique_ptr<QObject> m_gallery;
};

} // namespace zemrak::test
