#include "demo/shotmaker.h"

#include "support/itemtree.h"
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

// For a check, or a picture, to be done. Milliseconds.
constexpr int patience = 10'000;

constexpr QSize windowSize(1020, 760);

bool isLoading(const QQuickItem *item)
{
    constexpr int loading = 2; // QQuickImageBase::Loading, which is private
    return item->inherits("QQuickImageBase") && item->property("status").toInt() == loading;
}

// A picture of the window when bindings, images and layouts have come to rest; animations are off. Null: they did not.
QImage grabAtRest(QQuickWindow &window)
{
    QImage last;
    const bool rests = QTest::qWaitFor(
        [&] {
            const QImage now = window.grabWindow();
            return std::exchange(last, now) == now && itemsWhere(window.contentItem(), isLoading).isEmpty();
        },
        patience);
    return rests ? last : QImage();
}

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
    const AddPrinterPresenter *adding = UiContext::of(set->window.engine()).session()->addPrinter();
    const auto isAnswered = [adding] { return !adding || (!adding->isScanning() && !adding->isAddingManual()); };
    if (!QTest::qWaitFor(isAnswered, patience)) {
        m_fault = QStringLiteral("a search was not answered");
        return false;
    }
    const auto isChecked = [&set] {
        set->clock.advance(100ms);
        return !set->stage.agent().isScanning();
    };
    if (shot.checked && !QTest::qWaitFor(isChecked, patience)) {
        m_fault = QStringLiteral("the connection check did not end");
        return false;
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
    const QImage picture = grabAtRest(window);
    if (picture.isNull()) {
        m_fault = QStringLiteral("the window did not come to rest");
        return false;
    }
    const QString file = m_folder.filePath(name + (dark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png")));
    constexpr int smallest = 0;
    if (picture.convertToFormat(QImage::Format_RGB888).save(file, "PNG", smallest))
        return true;
    m_fault = QStringLiteral("cannot write %1").arg(file);
    return false;
}

} // namespace zemrak::test
