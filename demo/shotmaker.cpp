#include "demo/shotmaker.h"

#include "ui/window/shell/uicontext.h"
#include "ui/window/shell/windowengine.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

namespace zemrak::test {

using namespace std::chrono_literals;

namespace {

// For bindings, images and layouts to come to rest; animations are off.
constexpr int restMs = 150;

// In tenths of a second.
constexpr int longestCheck = 600;

constexpr QSize windowSize(1020, 760);

} // namespace

ShotMaker::ShotMaker(const QString &folder, double textScale)
    : m_folder(folder)
    , m_textScale(textScale)
{
}

std::unique_ptr<ShotMaker::Set> ShotMaker::makeSet(bool dark) const
{
    auto set = std::make_unique<Set>();
    set->window.appearance().overrideDark(dark);
    set->window.appearance().overrideTextScale(m_textScale);
    set->window.appearance().overrideReducedMotion(true);
    return set;
}

bool ShotMaker::make(const QString &prefix)
{
    if (!m_folder.mkpath(QStringLiteral("."))) {
        m_fault = QStringLiteral("cannot make the folder %1").arg(m_folder.path());
        return false;
    }
    for (const bool dark : {false, true}) {
        for (const Shot &shot : shots()) {
            if (shot.name.startsWith(prefix) && !makeShot(shot, dark))
                return false;
        }
        if (QStringLiteral("gallery").startsWith(prefix) && !makeGallery(dark))
            return false;
    }
    return true;
}

bool ShotMaker::makeShot(const Shot &shot, bool dark)
{
    const std::unique_ptr<Set> set = makeSet(dark);
    if (!set->stage.enter(shot.situation)) {
        m_fault = QStringLiteral("the situation %1 was not reached").arg(shot.situation);
        return false;
    }
    set->window.show({});
    if (!set->window.isOpen()) {
        m_fault = QStringLiteral("the window cannot be built");
        return false;
    }
    set->window.window()->resize(windowSize);
    shot.open(UiContext::of(set->window.engine()));
    for (int tenths = 0; shot.checked && set->stage.agent().isScanning() && tenths < longestCheck; ++tenths) {
        set->clock.advance(100ms);
        QTest::qWait(1);
    }
    const bool saved = save(*set->window.window(), shot.name, dark);
    set->window.close();
    return saved;
}

bool ShotMaker::makeGallery(bool dark)
{
    const std::unique_ptr<Set> set = makeSet(dark);
    const std::unique_ptr<QQmlEngine> engine
        = makeWindowEngine(set->stage.services(), set->window.appearance(), set->window.designer());
    QQmlComponent component(engine.get(), QUrl(QStringLiteral("qrc:/demo/Gallery.qml")));
    const std::unique_ptr<QObject> object(component.create());
    auto *window = qobject_cast<QQuickWindow *>(object.get());
    if (!window) {
        m_fault = component.errorString();
        return false;
    }
    window->show();
    return save(*window, QStringLiteral("gallery"), dark);
}

bool ShotMaker::save(QQuickWindow &window, const QString &name, bool dark)
{
    if (!QTest::qWaitForWindowExposed(&window)) {
        m_fault = QStringLiteral("the window was not shown");
        return false;
    }
    QTest::qWait(restMs);
    const QString file = m_folder.filePath(name + (dark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png")));
    constexpr int smallest = 0;
    if (window.grabWindow().convertToFormat(QImage::Format_RGB888).save(file, "PNG", smallest))
        return true;
    m_fault = QStringLiteral("cannot write %1").arg(file);
    return false;
}

} // namespace zemrak::test
