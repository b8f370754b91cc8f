#include "health/statusbarcontroller.h"
#include "health/statusicon.h"
#include "support/testmain.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace zemrak;
using zemrak::test::InRow;

namespace {

using Kind = StatusMenuEntry::Kind;

/// The menu as a column of text: disabled entries in brackets, a tick or its absence behind, the command last.
QString asText(const QList<StatusMenuEntry> &menu)
{
    QStringList lines;
    for (const StatusMenuEntry &entry : menu) {
        if (entry.kind == Kind::Separator)
            lines.append(QStringLiteral("--"));
        else if (entry.kind != Kind::Command)
            lines.append(u'[' + entry.text + u']');
        else
            lines.append(entry.text + (entry.checkable ? (entry.checked ? u'+' : u'-') : u' ')
                + QString::number(static_cast<int>(entry.command)));
    }
    return lines.join(u'\n');
}

HealthSummary fine(qint64 connected)
{
    return {.ok = true, .headline = QStringLiteral("كل شيء يعمل"), .problems = {}, .connected = connected};
}

const HealthSummary broken{
    .ok = false, .headline = QStringLiteral("المنفذ مشغول"), .problems = {QStringLiteral("ا"), QStringLiteral("ب")}};

class RecordingItem final : public StatusItem
{
public:
    void show(const QIcon &icon, const StatusContent &content) override
    {
        icons.append(icon.cacheKey());
        contents.append(content);
    }
    void onCommand(OnCommand command) override { chosen = std::move(command); }
    [[nodiscard]] bool isAvailable() const override { return true; }

    QList<qint64> icons;
    QList<StatusContent> contents;
    OnCommand chosen;
};

QImage plainLogo()
{
    QImage logo(512, 512, QImage::Format_RGB32);
    logo.fill(Qt::blue);
    return logo;
}

/// The colour at a point of the icon, measured as its geometry is: from the bottom left.
QColor at(const QImage &icon, QPointF point)
{
    const qreal scale = icon.width() / 22.0;
    return icon.pixelColor(static_cast<int>(point.x() * scale), static_cast<int>((22 - point.y()) * scale));
}

const QColor red(0xff, 0x3b, 0x30);

} // namespace

class StatusItemTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts()
    {
        const QString window = QStringLiteral("\n--\nفتح النافذة 0\nفحص الاتصال 1\n--\n");
        const QString login = window + QStringLiteral("التشغيل عند بدء تشغيل الجهاز");
        const QString end = QStringLiteral("\nإعادة تشغيل الخدمة 4\n--\nخروج 5");
        for (const auto &[connected, printers] : {std::pair(0, QStringLiteral("0 طابعات متصلة")),
                 std::pair(1, QStringLiteral("طابعة واحدة متصلة")), std::pair(3, QStringLiteral("3 طابعات متصلة"))}) {
            const StatusContent content = statusContent(fine(connected), true, false);
            QCOMPARE(content.tooltip, QStringLiteral("Zemrak Printer\n✓ كل شيء يعمل — ") + printers);
            QCOMPARE(asText(content.menu),
                QStringLiteral("[✓ كل شيء يعمل]\n[   ") + printers + u']' + login + QStringLiteral("+2") + end);
            QVERIFY(!content.problem);
        }
        const StatusContent content = statusContent(broken, false, true); // and leave is to be given
        QCOMPARE(content.tooltip, QStringLiteral("Zemrak Printer\n\u26A0\uFE0E المنفذ مشغول\n\u2022 ا\n\u2022 ب"));
        QCOMPARE(asText(content.menu),
            QStringLiteral("[\u26A0\uFE0E المنفذ مشغول]\n[   ا]\n[   ب]") + login
                + QStringLiteral("-2\nالسماح من إعدادات النظام… 3") + end);
        QVERIFY(content.problem);
    }

    void icon()
    {
        for (const qreal scale : {1.0, 1.5, 2.0, 3.0, 8.0}) {
            for (const QImage &logo : {plainLogo(), QImage()}) {
                const InRow row(QByteArray::number(scale) + (logo.isNull() ? ", no logo" : ""));
                const QImage good = drawStatusIcon(logo, false, scale);
                const QImage bad = drawStatusIcon(logo, true, scale);
                QCOMPARE(good.size(), QSize(qRound(22 * scale), qRound(22 * scale)));
                QCOMPARE(bad.size(), good.size());

                // The mark fills its place and leaves the rest, with the wider margin above.
                QCOMPARE(at(good, {11, 7}).alpha(), 255);
                for (const QPointF &outside : {QPointF(1, 11), QPointF(20.9, 11), QPointF(11, 1), QPointF(11, 19.9)})
                    QCOMPARE(at(good, outside).alpha(), 0);
                QCOMPARE(at(bad, {16.9, 16.9}), red);
                QCOMPARE(at(bad, {16.9, 14.5}), red);
                QCOMPARE(at(bad, {11, 7}), at(good, {11, 7}));
                QVERIFY(at(good, {16.9, 16.9}) != red);
                // On the coarsest screen the ring falls between pixels; the panel still shows through more than the
                // logo.
                QVERIFY(at(bad, {16.9, 12.95}).alpha() < 128);
            }
        }
        // At this scale the ring between the radii 3.3 and 4.6 holds whole pixels all the way round.
        const QImage good = drawStatusIcon(plainLogo(), false, 8);
        const QImage bad = drawStatusIcon(plainLogo(), true, 8);
        for (const QPointF &gap : {QPointF(16.9, 12.95), QPointF(12.95, 16.9), QPointF(14.1, 14.1)}) {
            QCOMPARE(at(good, gap), QColor(Qt::blue));
            QCOMPARE(at(bad, gap).alpha(), 0);
        }
        QCOMPARE(at(bad, {16.9, 12.0}), QColor(Qt::blue));
        QCOMPARE(at(bad, {12.0, 16.9}), QColor(Qt::blue));
    }

    void iconIsDrawnForEachScale()
    {
        const QIcon icon = statusIcon(plainLogo(), true);
        for (const qreal scale : {1.0, 1.5, 2.0, 3.0}) {
            const QImage drawn = drawStatusIcon(plainLogo(), true, scale);
            QCOMPARE(icon.pixmap(drawn.size()).toImage().convertToFormat(QImage::Format_ARGB32),
                drawn.convertToFormat(QImage::Format_ARGB32));
        }
    }

    void controllerTouchesTheItemOnlyForNews()
    {
        RecordingItem item;
        QList<StatusCommand> told;
        {
            StatusBarController controller(item, plainLogo());
            connect(&controller, &StatusBarController::commandChosen, this,
                [&told](StatusCommand command) { told.append(command); });
            for (int poll = 0; poll < 2; ++poll)
                controller.update(fine(1), false, false);
            controller.update(fine(1), true, false);
            controller.update(broken, true, false);
            controller.update(broken, true, true);
            item.chosen(StatusCommand::Scan);
        }
        QCOMPARE(item.contents,
            (QList{statusContent(fine(1), false, false), statusContent(fine(1), true, false),
                statusContent(broken, true, false), statusContent(broken, true, true)}));
        // The same icon is handed on as the same, so that it need not be sent again.
        QVERIFY(item.icons[0] == item.icons[1] && item.icons[1] != item.icons[2] && item.icons[2] == item.icons[3]);
        QCOMPARE(told, QList{StatusCommand::Scan});
        QVERIFY(!item.chosen); // the controller is gone
    }

    void previews()
    {
        const QTemporaryDir folder;
        const QString made = folder.filePath(QStringLiteral("not/there yet"));
        QVERIFY(renderPreviews(made, plainLogo()));
        for (const char *name : {"fine", "problem", "nologo"}) {
            const QImage strip(made + QStringLiteral("/menubar-") + QLatin1String(name) + QStringLiteral(".png"));
            QCOMPARE(strip.width(), 352); // 176 points
            QVERIFY(strip.pixelColor(0, 0).lightness() > 200 && strip.pixelColor(351, 0).lightness() < 60);
            const QPoint centre = QPoint(strip.width() / 4, strip.height() / 2);
            QCOMPARE(strip.pixelColor(centre) == QColor(Qt::blue), qstrcmp(name, "nologo") != 0);
            // 5.9 points right of and above the centre is the middle of the dot.
            QCOMPARE(strip.pixelColor(centre + QPoint(12, -12)) == red, qstrcmp(name, "fine") != 0);
        }
        QVERIFY(!renderPreviews(QStringLiteral("/proc/nowhere"), plainLogo()));
    }
};

ZEMRAK_TEST(statusitem, StatusItemTest, QApplication)
#include "tst_statusitem.moc"
