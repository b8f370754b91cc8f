// Every component, alone and in the gallery, offscreen and right to left, with nothing left to warn about.
#include "base/clock.h"
#include "demo/stage.h"
#include "platform/none/inert.h"
#include "support/heldkey.h"
#include "support/itemtree.h"
#include "support/rows.h"
#include "support/testmain.h"
#include "support/warnings.h"
#include "ui/kit/appearance.h"
#include "ui/kit/colors.h"
#include "ui/presenters/designer/designerpresenter.h"
#include "ui/window/shell/uicontext.h"
#include "ui/window/shell/windowengine.h"

#include <QApplication>
#include <QDirIterator>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

namespace {

bool isPartOfLong(const QQuickItem *item)
{
    return item && (item->objectName().startsWith("long"_L1) || isPartOfLong(item->parentItem()));
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
        QCOMPARE(m_warnings->take(), QStringList(u"seen"_s));
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
            QDirIterator files(QString::fromLatin1(folder), {u"*.qml"_s});
            while (files.hasNext()) {
                const QString file = files.next();
                QTest::newRow(qPrintable(files.fileName())) << u"qrc"_s + file;
            }
        }
    }
    void eachAlone()
    {
        QFETCH(QString, file);
        QQmlComponent component(m_engine.get(), QUrl(file));
        QVariantMap properties;
        if (file.endsWith("FocusScroller.qml"_L1))
            properties[u"view"_s] = m_bench->property("flickable");
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
        for (const QQuickItem *each : items()) {
            texts += each->property("truncated").isValid();
            QVERIFY2(!each->property("truncated").toBool() || isPartOfLong(each),
                qPrintable(each->property("text").toString()));
        }
        QVERIFY(texts > 50);
        QVERIFY(item("toggle")->mapToScene({}).x() > item("check")->mapToScene({}).x()); // begins at the right
    }

    // What can be used, and what tells something without words, stands out from what it lies on by 3:1; text by 4.5:1.
    void colours()
    {
        const QList<QStringList> rows = rowsOf(R"(
            fieldBorder fieldBorderHover track gPrimary | gBg gCard raised field well | 3
            gGreen gRed gAmber #60a5fa                  | glyphGround                 | 3
            onFill                                      | track                       | 3
            gText gMuted                                | gBg gCard raised field well | 4.5
            onFill                                      | primaryFill dangerFill      | 4.5
            toastInk                                    | toast                       | 4.5)");
        for (const bool dark : {false, true}) {
            m_appearance.overrideDark(dark);
            const std::unique_ptr<QObject> holder = themeHolder();
            const auto *theme = holder->property("theme").value<QObject *>();
            const auto named = [theme](const QString &name) {
                const QColor value
                    = name.startsWith(u'#') ? QColor(name) : theme->property(name.toLatin1()).value<QColor>();
                if (!value.isValid() || value.alpha() != 255)
                    qFatal("no opaque colour %s", qPrintable(name));
                return value;
            };
            for (const QStringList &row : rows) {
                for (const QString &colour : row[0].split(u' ')) {
                    for (const QString &ground : row[1].split(u' '))
                        QVERIFY2(contrast(named(colour), named(ground)) >= row[2].toDouble(),
                            qPrintable(colour + u" on "_s + ground + (dark ? u", dark"_s : u", light"_s)));
                }
            }
        }
    }

    // One whose name QML takes for something else is left without a value, and draws black.
    void everyColourIsThere()
    {
        const std::unique_ptr<QObject> holder = themeHolder();
        const auto *theme = holder->property("theme").value<QObject *>();
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

    void actsOnceForAPressAndForAHeldKey()
    {
        openGallery();
        const char *const clicked = SIGNAL(clicked());
        const char *const toggled = SIGNAL(toggleRequested(bool));
        for (const auto &[name, signal, keys] :
            {std::tuple{"primary", clicked, QList{Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}},
                {"toggle", toggled, QList{Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}},
                {"check", toggled, QList{Qt::Key_Space}}, {"input", SIGNAL(accepted()), QList{Qt::Key_Return}}}) {
            QSignalSpy spy(item(name), signal);
            item(name)->forceActiveFocus(Qt::TabFocusReason);
            for (const Qt::Key key : keys) {
                holdKey(*m_gallery, key, 5);
                holdKey(*m_gallery, key, 0);
            }
            QCOMPARE(spy.count(), 2 * keys.size());
            if (signal == clicked || signal == toggled) { // over the accessibility bus
                pressAccessibly(item(name));
                QCOMPARE(spy.count(), 2 * keys.size() + 1);
            }
        }
        QCOMPARE(item("toggle")->property("on").toBool(), false); // it only asks
        item("input")->forceActiveFocus();
        const QString before = item("input")->property("text").toString();
        holdKey(*m_gallery, Qt::Key_Space, 3); // goes on typing
        QCOMPARE(item("input")->property("text").toString(), before + u"    "_s);
        item("select")->forceActiveFocus();
        QSignalSpy chosen(item("select"), SIGNAL(chosen(QVariant)));
        holdKey(*m_gallery, Qt::Key_Down, 1); // the arrows go on, too
        QCOMPARE(chosen.count(), 2);
    }

    void everyControlHasANameAndARole()
    {
        openGallery();
        QList<QAccessible::Role> roles;
        QStringList read;
        for (QQuickItem *candidate : items()) {
            QAccessibleInterface *told = QAccessible::queryAccessibleInterface(candidate);
            if (told && (told->role() == QAccessible::StaticText || told->role() == QAccessible::Heading))
                read.append(told->text(QAccessible::Name));
            if (!candidate->activeFocusOnTab())
                continue;
            QVERIFY2(told && !told->text(QAccessible::Name).isEmpty() && told->role() != QAccessible::NoRole,
                candidate->metaObject()->className());
            roles.append(told->role());
        }
        QVERIFY(roles.size() > 20);
        // Those that Qt's templates would make plain buttons of.
        QCOMPARE(roles.count(QAccessible::PageTab), 1);
        QCOMPARE(roles.count(QAccessible::CheckBox), 7);
        QVERIFY(roles.contains(QAccessible::ComboBox) && roles.contains(QAccessible::EditableText));
        const QAccessible::State toggle = QAccessible::queryAccessibleInterface(item("toggle"))->state();
        QCOMPARE(bool(toggle.checked), item("toggle")->property("on").toBool());
        for (const QString &text :
            {u"النماذج"_s, u"عنوان IP"_s, u"https:"_s + u"//pos.shop.example:3000"_s}) // a title, a label, no marks
            QVERIFY2(read.contains(text), qPrintable(text));
        QVERIFY(!read.contains(u"فحص الاتصال"_s)); // a button's words are the button's
    }

    void selectByKeyboard()
    {
        openGallery();
        QQuickItem *select = focus("select");
        const auto isOpen = [select] { return select->property("open").toBool(); };
        QSignalSpy chosen(select, SIGNAL(chosen(QVariant)));
        key(Qt::Key_Down);
        QCOMPARE(chosen.takeFirst().at(0).toString(), u"escpos"_s);
        QCOMPARE(select->property("displayText").toString(), u"تلقائي"_s); // it only asks
        select->setProperty("value", u"none"_s);
        QCOMPARE(select->property("displayText").toString(), u"طابعة عادية (A4 / ملصقات)"_s);
        select->setProperty("value", QVariant());
        key(Qt::Key_Return);
        QTRY_VERIFY(isOpen());
        key(Qt::Key_Escape);
        QTRY_VERIFY(!isOpen());
        QCOMPARE(chosen.count(), 0);
        key(Qt::Key_Return);
        QTRY_VERIFY(isOpen());
        key(Qt::Key_End);
        key(Qt::Key_Return);
        QTRY_COMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).toString(), u"none"_s);
    }

    void keysOfTabsAndSearch()
    {
        openGallery();
        QSignalSpy chosen(focus("tabs"), SIGNAL(chosen(QVariant)));
        key(Qt::Key_Right); // before the first, in the reading direction
        QCOMPARE(chosen.count(), 0);
        key(Qt::Key_Left);
        QCOMPARE(chosen.value(0).value(0).toString(), u"usb"_s);
        const QQuickItem *search = focus("search");
        key(Qt::Key_A);
        QCOMPARE(search->property("text").toString(), u"a"_s);
        key(Qt::Key_Escape);
        QCOMPARE(search->property("text").toString(), QString());
    }

    void questionStartsAtNo()
    {
        openGallery();
        const QQuickItem *before = focus("input");
        auto *dialog = m_gallery->findChild<QObject *>(u"confirm"_s);
        QSignalSpy confirmed(dialog, SIGNAL(confirmed()));
        for (const Qt::Key answer : {Qt::Key_Escape, Qt::Key_Return}) { // the keyboard is on "no"
            QMetaObject::invokeMethod(dialog, "open");
            QTRY_COMPARE(dialog->property("opened").toBool(), true);
            for (int i = 0; i < 6; ++i) { // round and round, never out of it
                QVERIFY(m_gallery->activeFocusItem() != before);
                key(Qt::Key_Tab);
            }
            key(answer);
            QTRY_COMPARE(dialog->property("visible").toBool(), false);
            QCOMPARE(confirmed.count(), 0);
            QTRY_COMPARE(m_gallery->activeFocusItem(), before);
        }
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
        QQmlComponent component(m_engine.get(), QUrl(u"qrc:/demo/Gallery.qml"_s));
        m_gallery.reset(qobject_cast<QQuickWindow *>(component.create()));
        QVERIFY2(m_gallery, qPrintable(component.errorString()));
        m_gallery->show();
        m_gallery->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_gallery.get()));
    }
    void key(Qt::Key pressed) { QTest::keyClick(m_gallery.get(), pressed); }
    QList<QQuickItem *> items()
    {
        return itemsWhere(m_gallery->contentItem(), [](const QQuickItem *) { return true; });
    }
    QQuickItem *item(const char *name)
    {
        auto *found = m_gallery->findChild<QQuickItem *>(QString::fromLatin1(name));
        if (!found)
            qFatal("the gallery has no item %s", name);
        return found;
    }
    QQuickItem *focus(const char *name)
    {
        item(name)->forceActiveFocus(Qt::TabFocusReason);
        return item(name);
    }

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
