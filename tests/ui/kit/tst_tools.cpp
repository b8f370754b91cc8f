// The kit's C++: colours, symbols, text size, clicks, clipboard.
#include "platform/none/inert.h"
#include "support/testmain.h"
#include "ui/kit/appearance.h"
#include "ui/kit/clickoutside.h"
#include "ui/kit/clipboard.h"
#include "ui/kit/colors.h"
#include "ui/kit/iconprovider.h"
#include "ui/kit/icons.h"

#include <QApplication>
#include <QClipboard>
#include <QFont>
#include <QPalette>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;
using namespace zemrak::test;

class ToolsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsColours_data()
    {
        QTest::addColumn<QString>("hex");
        QTest::addColumn<QColor>("colour");
        const auto row = [](const char *hex, const QColor &colour) {
            QTest::newRow(*hex ? hex : "empty") << QString::fromLatin1(hex) << colour;
        };
        row("16a34a", QColor(22, 163, 74));
        row("+16A34A", QColor(22, 163, 74));
        row("a", QColor(0, 0, 10));
        row("ff16a34a", QColor(22, 163, 74)); // what stands above 24 bits is left out
        for (const char *bad : {"#16a34a", "", "+", "-16a34a", "++1", "16a34g", " 16a34a", "0x16a34", "116a34a00"})
            row(bad, QColor(Qt::black));
    }

    void readsColours()
    {
        QFETCH(QString, hex);
        QFETCH(QColor, colour);
        QCOMPARE(colorFromHex(hex), colour);
        QCOMPARE(colorFromHex(hex).alpha(), 255);
    }

    void makesColoursReadable()
    {
        const QColor white(Qt::white);
        const QColor ink(0x0f172a);
        QCOMPARE(readable(QColor(0x9d4edd), white, ink), QColor(0x9d4edd)); // already is
        for (const int rgb : {0x16a34a, 0xd97706, 0xc084fc, 0xffffff}) {
            const QColor result = readable(QColor(rgb), white, ink);
            QVERIFY(contrast(result, white) >= 4.5);
            QVERIFY(result != ink || rgb == 0xffffff);
        }
        QCOMPARE(qRound(contrast(Qt::black, Qt::white)), 21);
    }

    void drawsEverySymbol()
    {
        IconProvider provider;
        for (const IconEntry &icon : iconTable()) {
            const QImage image = provider.requestImage(icon.symbol + QStringLiteral("?ff0000"), nullptr, {32, 32});
            int drawn = 0;
            for (int y = 0; y < 32; ++y) {
                for (int x = 0; x < 32; ++x) {
                    const QColor pixel = image.pixelColor(x, y);
                    drawn += pixel.alpha() > 128;
                    QVERIFY2(pixel.alpha() < 16 || (pixel.green() == 0 && pixel.blue() == 0), icon.symbol.data());
                }
            }
            QVERIFY2(drawn > 20, icon.symbol.data());
        }
        const QString chevron = QStringLiteral("chevron.left?000000");
        const QImage plain = provider.requestImage(chevron, nullptr, {20, 20});
        QCOMPARE(
            provider.requestImage(chevron + QStringLiteral("&mirror"), nullptr, {20, 20}), plain.mirrored(true, false));
        QVERIFY(findIcon(u"chevron.left")->mirrors);
        QVERIFY(!findIcon(u"clock.arrow.circlepath")->mirrors);
        QVERIFY(!findIcon(u"no.such.symbol"));
        QTest::ignoreMessage(QtWarningMsg, "No drawing for the symbol \"no.such.symbol\"");
        QCOMPARE(provider.requestImage(QStringLiteral("no.such.symbol"), nullptr, {8, 8}).pixelColor(4, 4).alpha(), 0);
    }

    void scalesText_data()
    {
        QTest::addColumn<double>("points");
        QTest::addColumn<double>("factor");
        QTest::addColumn<double>("scale");
        QTest::newRow("ordinary") << 10.0 << 1.0 << 1.0;
        QTest::newRow("small") << 7.0 << 0.8 << 1.0;
        QTest::newRow("font") << 13.75 << 1.0 << 1.25;
        QTest::newRow("factor") << 10.0 << 1.25 << 1.25;
        QTest::newRow("huge") << 30.0 << 3.0 << 1.5;
    }

    void scalesText()
    {
        QFETCH(double, points);
        QFETCH(double, factor);
        QFETCH(double, scale);
        QFont font;
        font.setPointSizeF(points);
        QCOMPARE(textScaleFor(font, factor), scale);
        QCOMPARE(textScaleFor(font, {}), points < 11 ? 1.0 : textScaleFor(font, 1));
    }

    void followsThePaletteWithoutAPortal()
    {
        const QPalette before = QGuiApplication::palette();
        Appearance appearance(std::make_unique<none::NoAppearanceSettings>());
        QPalette dark(before);
        dark.setColor(QPalette::Window, Qt::black);
        dark.setColor(QPalette::WindowText, Qt::white);
        QGuiApplication::setPalette(dark);
        QTRY_VERIFY(appearance.isDark());
        appearance.overrideDark(false);
        QVERIFY(!appearance.isDark());
        appearance.overrideDark({});
        QVERIFY(appearance.isDark());
        QGuiApplication::setPalette(before);
        QTRY_COMPARE(appearance.isDark(), looksDark(before));
    }

    void clickOutsideEndsEditing()
    {
        QQuickView view;
        view.setSource(QUrl(QStringLiteral("qrc:/tst/clicks.qml")));
        new ClickOutside(view);
        view.show();
        view.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        auto *field = view.rootObject()->findChild<QQuickItem *>(QStringLiteral("field"));
        auto *other = view.rootObject()->findChild<QQuickItem *>(QStringLiteral("other"));
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
            field->forceActiveFocus();
            QTest::mouseClick(&view, button, {}, {200, 150}); // open ground
            QVERIFY(!field->hasActiveFocus());
        }
        field->forceActiveFocus();
        QTest::mouseClick(&view, Qt::MiddleButton, {}, {200, 150});
        QVERIFY(field->hasActiveFocus());
        QTest::mouseClick(&view, Qt::LeftButton, {}, {20, 10}); // in itself
        QVERIFY(field->hasActiveFocus());
        QTest::mouseClick(&view, Qt::LeftButton, {}, {20, 60}); // in another field
        QVERIFY(other->hasActiveFocus());
        auto *popup = view.rootObject()->property("popup").value<QObject *>();
        QMetaObject::invokeMethod(popup, "open");
        QTRY_VERIFY(popup->property("opened").toBool());
        field->forceActiveFocus();
        QSignalSpy left(field, &QQuickItem::activeFocusChanged); // a press that goes on to the field gives it back
        QTest::mouseClick(&view, Qt::LeftButton, {}, {20, 10});
        QCOMPARE(left.count(), 0);
        QTest::mouseClick(&view, Qt::LeftButton, {}, {20, 60}); // on the popup, which covers the other field
        QVERIFY(!field->hasActiveFocus() && !other->hasActiveFocus());
        QMetaObject::invokeMethod(popup, "close");
        auto *button = view.rootObject()->findChild<QQuickItem *>(QStringLiteral("button"));
        button->forceActiveFocus();
        QTest::mouseClick(&view, Qt::LeftButton, {}, {200, 150});
        QVERIFY(button->hasActiveFocus()); // only editing ends
    }

    void copiesWithoutInvisibleMarks()
    {
        Clipboard::copy(QStringLiteral("\u2066job-1\u2069 \u200eطابعة"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("job-1 طابعة"));
    }
};

ZEMRAK_TEST(tools, ToolsTest, QApplication)
#include "tst_tools.moc"
