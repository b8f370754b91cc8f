// The kit's C++: colours, symbols, text size, clicks, clipboard.
#include "platform/none/inert.h"
#include "support/rows.h"
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

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

class ToolsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsColours()
    {
        for (const QStringList &row : rowsOf(R"(
                16a34a    | #16a34a
                +16A34A   | #16a34a
                a         | #00000a
                ff16a34a  | #16a34a)")) { // what stands above 24 bits is left out
            QCOMPARE(colorFromHex(row[0]).name(), row[1]);
            QCOMPARE(colorFromHex(row[0]).alpha(), 255);
        }
        for (const char *bad : {"#16a34a", "", "+", "-16a34a", "++1", "16a34g", " 16a34a", "0x16a34", "116a34a00"})
            QVERIFY2(colorFromHex(QString::fromLatin1(bad)) == QColor(Qt::black), bad);
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
            const QImage image = provider.requestImage(icon.symbol + u"?ff0000"_s, nullptr, {32, 32});
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
        const QString chevron = u"chevron.left?000000"_s;
        const QImage plain = provider.requestImage(chevron, nullptr, {20, 20});
        QCOMPARE(provider.requestImage(chevron + u"&mirror"_s, nullptr, {20, 20}), plain.mirrored(true, false));
        QVERIFY(findIcon(u"chevron.left")->mirrors);
        QVERIFY(!findIcon(u"clock.arrow.circlepath")->mirrors);
        QVERIFY(!findIcon(u"no.such.symbol"));
        QTest::ignoreMessage(QtWarningMsg, "No drawing for the symbol \"no.such.symbol\"");
        QCOMPARE(provider.requestImage(u"no.such.symbol"_s, nullptr, {8, 8}).pixelColor(4, 4).alpha(), 0);
    }

    void scalesText()
    {
        // The desktop's font in points, its factor, and what comes of both.
        for (const auto &[points, factor, scale] :
            {std::array{10.0, 1.0, 1.0}, {7.0, 0.8, 1.0}, {13.75, 1.0, 1.25}, {10.0, 1.25, 1.25}, {30.0, 3.0, 1.5}}) {
            QFont font;
            font.setPointSizeF(points);
            QCOMPARE(textScaleFor(font, factor), scale);
            QCOMPARE(textScaleFor(font, {}), points < 11 ? 1.0 : textScaleFor(font, 1));
        }
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
        view.setSource(QUrl(u"qrc:/tst/clicks.qml"_s));
        new ClickOutside(view);
        view.show();
        view.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        const auto named = [&view](const QString &name) { return view.rootObject()->findChild<QQuickItem *>(name); };
        const auto click = [&view](QPoint place, Qt::MouseButton button = Qt::LeftButton) {
            QTest::mouseClick(&view, button, {}, place);
        };
        constexpr QPoint ground(200, 150), inField(20, 10), inOther(20, 60);
        QQuickItem *field = named(u"field"_s);
        QQuickItem *other = named(u"other"_s);
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
            field->forceActiveFocus();
            click(ground, button);
            QVERIFY(!field->hasActiveFocus());
        }
        field->forceActiveFocus();
        click(ground, Qt::MiddleButton);
        QVERIFY(field->hasActiveFocus());
        click(inField);
        QVERIFY(field->hasActiveFocus());
        click(inOther);
        QVERIFY(other->hasActiveFocus());
        auto *popup = view.rootObject()->property("popup").value<QObject *>();
        QMetaObject::invokeMethod(popup, "open");
        QTRY_VERIFY(popup->property("opened").toBool());
        field->forceActiveFocus();
        QSignalSpy left(field, &QQuickItem::activeFocusChanged); // a press that goes on to the field gives it back
        click(inField);
        QCOMPARE(left.count(), 0);
        click(inOther); // on the popup, which covers the other field
        QVERIFY(!field->hasActiveFocus() && !other->hasActiveFocus());
        QMetaObject::invokeMethod(popup, "close");
        QQuickItem *button = named(u"button"_s);
        button->forceActiveFocus();
        click(ground);
        QVERIFY(button->hasActiveFocus()); // only editing ends
    }

    void copiesWithoutInvisibleMarks()
    {
        Clipboard::copy(u"\u2066job-1\u2069 \u200eطابعة"_s);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"job-1 طابعة"_s);
    }
};

ZEMRAK_TEST(tools, ToolsTest, QApplication)
#include "tst_tools.moc"
