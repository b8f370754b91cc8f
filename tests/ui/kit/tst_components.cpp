// Every component, alone and in the gallery, offscreen and right to left, with nothing left to warn about.
#include "base/clock.h"
#include "demo/stage.h"
#include "platform/none/inert.h"
#include "support/heldkey.h"
#include "support/itemtree.h"
#include "support/testmain.h"
#include "support/warnings.h"
#include "ui/kit/appearance.h"
#include "ui/kit/colors.h"
#include "ui/presenters/designer/designerpresenter.h"
#include "ui/window/shell/uicontext.h"
#include "ui/window/shell/windowengine.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDirIterator>
#include <QGuiApplication>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;

namespace {

bool isPartOfLong(const QQuickItem *item)
{
    for (; item; item = item->parentItem()) {
        if (item->objectName().startsWith(QLatin1String("long")))
            return true;
    }
    return false;
}

} // namespace

class ComponentsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_warnings = std::make_unique<Warnings>();
        qWarning("seen");
        QCOMPARE(m_warnings->take(), QStringList{QStringLiteral("seen")});
        QAccessible::setActive(true);
        m_appearance.overrideReducedMotion(true);
        m_engine = makeWindowEngine(m_stage.services(), m_appearance, m_designer);
        UiContext::of(m_engine.get()).beginSession();
        QQmlComponent bench(m_engine.get());
        bench.setData("import QtQuick\nimport Zemrak.Kit\nBaseWindow { width: 600; height: 400; visible: true\n"
                      "property Flickable flickable: held; Flickable { id: held } }",
            QUrl());
        m_bench.reset(qobject_cast<QQuickWindow *>(bench.create()));
        QVERIFY2(m_bench, qPrintable(bench.errorString()));
        QVERIFY(QTest::qWaitForWindowExposed(m_bench.get()));
    }

    void init()
    {
        m_appearance.overrideDark(false);
        m_appearance.overrideTextScale(1);
        m_warnings->forget();
    }

    void cleanup()
    {
        m_gallery.reset();
        QCOMPARE(m_warnings->take(), QStringList());
    }

    void eachAlone_data()
    {
        QTest::addColumn<QString>("file");
        for (const char *folder : {":/qt/qml/Zemrak/Kit/components", ":/qt/qml/Zemrak/Window/pages/common"}) {
            QDirIterator files(QString::fromLatin1(folder), {QStringLiteral("*.qml")});
            while (files.hasNext()) {
                const QString file = files.next();
                QTest::newRow(qPrintable(files.fileName())) << QStringLiteral("qrc") + file;
            }
        }
    }

    void eachAlone()
    {
        QFETCH(QString, file);
        QQmlComponent component(m_engine.get(), QUrl(file));
        QVariantMap properties;
        if (file.endsWith(QLatin1String("FocusScroller.qml")))
            properties.insert(QStringLiteral("view"), m_bench->property("flickable"));
        const std::unique_ptr<QObject> object(component.createWithInitialProperties(properties));
        QVERIFY2(object, qPrintable(component.errorString()));
        if (auto *item = qobject_cast<QQuickItem *>(object.get()))
            item->setParentItem(m_bench->contentItem());
        QVERIFY(!m_bench->grabWindow().isNull()); // laid out and drawn
    }

    void gallery_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<double>("textScale");
        for (const bool dark : {false, true}) {
            for (const double scale : {1.0, 1.25, 1.5})
                QTest::addRow("%s %g", dark ? "dark" : "light", scale) << dark << scale;
        }
    }

    void gallery()
    {
        QFETCH(bool, dark);
        QFETCH(double, textScale);
        m_appearance.overrideDark(dark);
        m_appearance.overrideTextScale(textScale);
        openGallery();
        QCOMPARE(m_gallery->color(), dark ? QColor(0x020817) : QColor(0xf8fafc));
        int texts = 0;
        for (const QQuickItem *item : items()) {
            const QVariant truncated = item->property("truncated");
            if (!truncated.isValid() || !item->isVisible())
                continue;
            ++texts;
            QVERIFY2(!truncated.toBool() || isPartOfLong(item), qPrintable(item->property("text").toString()));
        }
        QVERIFY(texts > 50);
    }

    // What can be used, and what tells something without words, stands out from what it lies on by 3:1; text by 4.5:1.
    void colours_data()
    {
        QTest::addColumn<QByteArray>("colour");
        QTest::addColumn<QByteArrayList>("grounds");
        QTest::addColumn<double>("least");
        const QByteArrayList surfaces{"gBg", "gCard", "raised", "field", "well"};
        for (const char *used : {"fieldBorder", "fieldBorderHover", "track", "gPrimary"})
            QTest::newRow(used) << QByteArray(used) << surfaces << 3.0;
        for (const char *glyph : {"gGreen", "gRed", "gAmber", "#60a5fa"})
            QTest::newRow(glyph) << QByteArray(glyph) << QByteArrayList{"glyphGround"} << 3.0;
        QTest::newRow("knob of a switch that is off") << QByteArray("onFill") << QByteArrayList{"track"} << 3.0;
        for (const char *text : {"gText", "gMuted"})
            QTest::newRow(text) << QByteArray(text) << surfaces << 4.5;
        QTest::newRow("onFill") << QByteArray("onFill") << QByteArrayList{"primaryFill", "dangerFill"} << 4.5;
        QTest::newRow("toastInk") << QByteArray("toastInk") << QByteArrayList{"toast"} << 4.5;
    }
    void colours()
    {
        QFETCH(QByteArray, colour);
        QFETCH(QByteArrayList, grounds);
        QFETCH(double, least);
        for (const bool dark : {false, true}) {
            m_appearance.overrideDark(dark);
            const std::unique_ptr<QObject> holder = themeHolder();
            const auto *theme = holder->property("theme").value<QObject *>();
            const auto named = [theme](const QByteArray &name) {
                const QColor value
                    = name.startsWith('#') ? QColor(QLatin1String(name)) : theme->property(name).value<QColor>();
                if (!value.isValid() || value.alpha() != 255)
                    qFatal("no opaque colour %s", name.data());
                return value;
            };
            for (const QByteArray &ground : grounds) {
                const double found = contrast(named(colour), named(ground));
                QVERIFY2(found >= least,
                    qPrintable(QStringLiteral("%1 %2 on %3: %4")
                                   .arg(dark ? QStringLiteral("dark") : QStringLiteral("light"), QLatin1String(colour),
                                       QLatin1String(ground))
                                   .arg(found)));
            }
        }
    }

    // One whose name QML takes for something else is left without a value, and draws black.
    void everyColourIsThere()
    {
        const std::unique_ptr<QObject> holder = themeHolder();
        const auto *theme = holder->property("theme").value<QObject *>();
        QVERIFY(theme);
        int colours = 0;
        for (int i = 0; i < theme->metaObject()->propertyCount(); ++i) {
            const QMetaProperty property = theme->metaObject()->property(i);
            if (property.metaType() != QMetaType::fromType<QColor>())
                continue;
            ++colours;
            QVERIFY2(property.read(theme).value<QColor>().isValid(), property.name());
        }
        QVERIFY(colours > 20);
    }

    void beginsAtTheRight()
    {
        openGallery();
        auto *toggle = item("toggle");
        auto *check = item("check");
        QVERIFY(toggle->mapToScene({}).x() > check->mapToScene({}).x());
    }

    void pressedOverTheAccessibilityBusOnce_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("signal");
        QTest::newRow("button") << QStringLiteral("primary") << QByteArray(SIGNAL(clicked()));
        QTest::newRow("toggle") << QStringLiteral("toggle") << QByteArray(SIGNAL(toggleRequested(bool)));
        QTest::newRow("check") << QStringLiteral("check") << QByteArray(SIGNAL(toggleRequested(bool)));
    }

    void pressedOverTheAccessibilityBusOnce()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, signal);
        openGallery();
        QSignalSpy spy(item(name), signal.constData());
        pressAccessibly(item(name));
        QCOMPARE(spy.count(), 1);
        item(name)->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(m_gallery.get(), Qt::Key_Space);
        QCOMPARE(spy.count(), 2);
    }

    void aHeldKeyActsOnce_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("signal");
        QTest::addColumn<Qt::Key>("key");
        const auto row = [](const char *name, const char *signal, Qt::Key key) {
            QTest::addRow("%s %x", name, key) << QString::fromLatin1(name) << QByteArray(signal) << key;
        };
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
            row("primary", SIGNAL(clicked()), key);
            row("toggle", SIGNAL(toggleRequested(bool)), key);
        }
        row("check", SIGNAL(toggleRequested(bool)), Qt::Key_Space);
        row("input", SIGNAL(accepted()), Qt::Key_Return);
    }

    void aHeldKeyActsOnce()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, signal);
        QFETCH(Qt::Key, key);
        openGallery();
        QSignalSpy spy(item(name), signal.constData());
        item(name)->forceActiveFocus(Qt::TabFocusReason);
        holdKey(*m_gallery, key, 5);
        QCOMPARE(spy.count(), 1);
        holdKey(*m_gallery, key, 0);
        QCOMPARE(spy.count(), 2);
    }

    void aHeldKeyGoesOnTyping()
    {
        openGallery();
        item("input")->forceActiveFocus();
        holdKey(*m_gallery, Qt::Key_Space, 3);
        QCOMPARE(item("input")->property("text").toString(), QStringLiteral("    "));
        item("select")->forceActiveFocus();
        QSignalSpy chosen(item("select"), SIGNAL(chosen(QVariant)));
        holdKey(*m_gallery, Qt::Key_Down, 1); // the arrows go on, too
        QCOMPARE(chosen.count(), 2);
    }

    void everyControlHasANameAndARole()
    {
        openGallery();
        QList<QAccessible::Role> roles;
        for (QQuickItem *candidate : items()) {
            if (!candidate->activeFocusOnTab() || !candidate->isVisible())
                continue;
            QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(candidate);
            const QString what = QString::fromLatin1(candidate->metaObject()->className());
            QVERIFY2(interface, qPrintable(what));
            QVERIFY2(!interface->text(QAccessible::Name).isEmpty(), qPrintable(what));
            QVERIFY2(interface->role() != QAccessible::NoRole, qPrintable(what));
            roles.append(interface->role());
        }
        QVERIFY(roles.size() > 20);
        // Those that Qt's templates would make plain buttons of.
        QCOMPARE(roles.count(QAccessible::PageTab), 1);
        QCOMPARE(roles.count(QAccessible::CheckBox), 7);
        QVERIFY(roles.contains(QAccessible::ComboBox) && roles.contains(QAccessible::EditableText));
        const QAccessible::State toggle = QAccessible::queryAccessibleInterface(item("toggle"))->state();
        QCOMPARE(bool(toggle.checked), item("toggle")->property("on").toBool());
    }

    void textsAreRead()
    {
        openGallery();
        QStringList names;
        for (QQuickItem *candidate : items()) {
            QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(candidate);
            if (interface && (interface->role() == QAccessible::StaticText || interface->role() == QAccessible::Heading))
                names.append(interface->text(QAccessible::Name));
        }
        QVERIFY(names.contains(QStringLiteral("النماذج"))); // a card's title
        QVERIFY(names.contains(QStringLiteral("عنوان IP"))); // a label
        QVERIFY(names.contains(QStringLiteral("https:") + QStringLiteral("//pos.shop.example:3000"))); // without marks
        QVERIFY(!names.contains(QStringLiteral("فحص الاتصال"))); // a button's words are the button's
    }

    void choicesOnlyAsk()
    {
        openGallery();
        auto *toggle = item("toggle");
        pressAccessibly(toggle);
        QCOMPARE(toggle->property("on").toBool(), false);

        auto *select = item("select");
        QSignalSpy chosen(select, SIGNAL(chosen(QVariant)));
        select->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(m_gallery.get(), Qt::Key_Down);
        QCOMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).toString(), QStringLiteral("escpos"));
        QCOMPARE(select->property("displayText").toString(), QStringLiteral("تلقائي"));
        select->setProperty("value", QStringLiteral("none"));
        QCOMPARE(select->property("displayText").toString(), QStringLiteral("طابعة عادية (A4 / ملصقات)"));
    }

    void selectOpensAndClosesByKeyboard()
    {
        openGallery();
        auto *select = item("select");
        QSignalSpy chosen(select, SIGNAL(chosen(QVariant)));
        select->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(m_gallery.get(), Qt::Key_Return);
        QTRY_VERIFY(select->property("open").toBool());
        QTest::keyClick(m_gallery.get(), Qt::Key_Escape);
        QTRY_VERIFY(!select->property("open").toBool());
        QCOMPARE(chosen.count(), 0);
        QTest::keyClick(m_gallery.get(), Qt::Key_Return);
        QTRY_VERIFY(select->property("open").toBool());
        QTest::keyClick(m_gallery.get(), Qt::Key_End);
        QTest::keyClick(m_gallery.get(), Qt::Key_Return);
        QTRY_COMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).toString(), QStringLiteral("none"));
    }

    void arrowsFollowTheReadingDirection()
    {
        openGallery();
        auto *tabs = item("tabs");
        QSignalSpy chosen(tabs, SIGNAL(chosen(QVariant)));
        tabs->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(m_gallery.get(), Qt::Key_Right); // before the first
        QCOMPARE(chosen.count(), 0);
        QTest::keyClick(m_gallery.get(), Qt::Key_Left);
        QCOMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).toString(), QStringLiteral("usb"));
    }

    void escapeEmptiesTheSearchFirst()
    {
        openGallery();
        auto *search = item("search");
        search->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(m_gallery.get(), Qt::Key_A);
        QCOMPARE(search->property("text").toString(), QStringLiteral("a"));
        QTest::keyClick(m_gallery.get(), Qt::Key_Escape);
        QCOMPARE(search->property("text").toString(), QString());
    }

    void questionStartsAtNo()
    {
        openGallery();
        auto *before = item("input");
        before->forceActiveFocus(Qt::TabFocusReason);
        auto *dialog = m_gallery->findChild<QObject *>(QStringLiteral("confirm"));
        QVERIFY(dialog);
        QSignalSpy confirmed(dialog, SIGNAL(confirmed()));
        QMetaObject::invokeMethod(dialog, "open");
        QTRY_COMPARE(dialog->property("opened").toBool(), true);
        for (int i = 0; i < 5; ++i) { // round and round, never out of it
            QVERIFY(m_gallery->activeFocusItem() != before);
            QTest::keyClick(m_gallery.get(), Qt::Key_Tab);
        }
        QTest::keyClick(m_gallery.get(), Qt::Key_Escape);
        QTRY_COMPARE(dialog->property("visible").toBool(), false);
        QCOMPARE(confirmed.count(), 0);
        QTRY_COMPARE(m_gallery->activeFocusItem(), before);
        QMetaObject::invokeMethod(dialog, "open");
        QTRY_COMPARE(dialog->property("opened").toBool(), true);
        QTest::keyClick(m_gallery.get(), Qt::Key_Return); // the keyboard is on "no"
        QTRY_COMPARE(dialog->property("visible").toBool(), false);
        QCOMPARE(confirmed.count(), 0);
    }

private:
    std::unique_ptr<QObject> themeHolder()
    {
        QQmlComponent component(m_engine.get());
        component.setData("import QtQml; import Zemrak.Kit; QtObject { property QtObject theme: Theme }", {});
        std::unique_ptr<QObject> holder(component.create());
        if (!holder)
            qFatal("%s", qPrintable(component.errorString()));
        return holder;
    }
    void openGallery()
    {
        QQmlComponent component(m_engine.get(), QUrl(QStringLiteral("qrc:/demo/Gallery.qml")));
        m_gallery.reset(qobject_cast<QQuickWindow *>(component.create()));
        QVERIFY2(m_gallery, qPrintable(component.errorString()));
        m_gallery->show();
        m_gallery->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_gallery.get()));
    }

    QList<QQuickItem *> items()
    {
        return itemsWhere(m_gallery->contentItem(), [](const QQuickItem *) { return true; });
    }
    QQuickItem *item(const QString &name)
    {
        auto *found = m_gallery->findChild<QQuickItem *>(name);
        if (!found)
            qFatal("the gallery has no item %s", qPrintable(name));
        return found;
    }
    QQuickItem *item(const char *name) { return item(QString::fromLatin1(name)); }

    std::unique_ptr<Warnings> m_warnings;
    SystemClock m_clock;
    Stage m_stage{m_clock};
    Appearance m_appearance{std::make_unique<none::NoAppearanceSettings>()};
    DesignerPresenter m_designer{m_stage.agent().commands(), m_stage.agent().messages(), 0};
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQuickWindow> m_bench;
    std::unique_ptr<QQuickWindow> m_gallery;
};

ZEMRAK_TEST(components, ComponentsTest, QApplication)
#include "tst_components.moc"
