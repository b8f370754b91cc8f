#include "health/statusbarcontroller.h"
#include "health/statusicon.h"

#include <QTemporaryDir>
#include <QTest>

using namespace zemrak;

namespace {

using Kind = StatusMenuEntry::Kind;

/// The menu as a column of text: disabled entries in brackets, ticks in front.
QStringList asText(const QList<StatusMenuEntry> &menu)
{
    QStringList lines;
    for (const StatusMenuEntry &entry : menu) {
        QString line = entry.text;
        if (entry.kind == Kind::Separator)
            line = QStringLiteral("--");
        else if (entry.kind != Kind::Command)
            line = QLatin1Char('[') + line + QLatin1Char(']');
        else if (entry.checkable)
            line.prepend(entry.checked ? QStringLiteral("[x] ") : QStringLiteral("[ ] "));
        lines.append(line);
    }
    return lines;
}

QList<StatusCommand> commands(const QList<StatusMenuEntry> &menu)
{
    QList<StatusCommand> found;
    for (const StatusMenuEntry &entry : menu) {
        if (entry.kind == Kind::Command)
            found.append(entry.command);
    }
    return found;
}

HealthSummary fine(qint64 connected)
{
    return {.ok = true, .headline = QStringLiteral("كل شيء يعمل"), .problems = {}, .connected = connected};
}

HealthSummary broken(const QList<QString> &problems)
{
    return {.ok = false, .headline = QStringLiteral("المنفذ مشغول"), .problems = problems, .connected = 2};
}

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
QColor at(const QImage &icon, qreal x, qreal y)
{
    const qreal scale = icon.width() / 22.0;
    return icon.pixelColor(static_cast<int>(x * scale), static_cast<int>((22 - y) * scale));
}

const QColor red(0xff, 0x3b, 0x30);

} // namespace

class StatusItemTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tooltip()
    {
        const auto tip = [](const HealthSummary &health) { return statusContent(health, false, false).tooltip; };
        QCOMPARE(tip(fine(1)), QStringLiteral("Zemrak Printer\n✓ كل شيء يعمل — طابعة واحدة متصلة"));
        QCOMPARE(tip(fine(0)), QStringLiteral("Zemrak Printer\n✓ كل شيء يعمل — 0 طابعات متصلة"));
        QCOMPARE(tip(fine(3)), QStringLiteral("Zemrak Printer\n✓ كل شيء يعمل — 3 طابعات متصلة"));
        QCOMPARE(tip(broken({QStringLiteral("ا"), QStringLiteral("ب")})),
            QStringLiteral("Zemrak Printer\n\u26A0\uFE0E المنفذ مشغول\n\u2022 ا\n\u2022 ب"));
    }

    void menu()
    {
        const StatusContent good = statusContent(fine(3), true, false);
        QVERIFY(!good.problem);
        QCOMPARE(asText(good.menu),
            (QStringList{QStringLiteral("[✓ كل شيء يعمل]"), QStringLiteral("[   3 طابعات متصلة]"), QStringLiteral("--"),
                QStringLiteral("فتح النافذة"), QStringLiteral("فحص الاتصال"), QStringLiteral("--"),
                QStringLiteral("[x] التشغيل عند بدء تشغيل الجهاز"), QStringLiteral("إعادة تشغيل الخدمة"),
                QStringLiteral("--"), QStringLiteral("خروج")}));
        QCOMPARE(commands(good.menu),
            (QList{StatusCommand::ShowWindow, StatusCommand::Scan, StatusCommand::ToggleLogin, StatusCommand::Restart,
                StatusCommand::Quit}));

        const StatusContent bad = statusContent(broken({QStringLiteral("ا"), QStringLiteral("ب")}), false, true);
        QVERIFY(bad.problem);
        QCOMPARE(asText(bad.menu).mid(0, 4),
            (QStringList{QStringLiteral("[\u26A0\uFE0E المنفذ مشغول]"), QStringLiteral("[   ا]"),
                QStringLiteral("[   ب]"), QStringLiteral("--")}));
        QCOMPARE(asText(bad.menu).mid(7, 3),
            (QStringList{QStringLiteral("[ ] التشغيل عند بدء تشغيل الجهاز"),
                QStringLiteral("السماح من إعدادات النظام…"), QStringLiteral("إعادة تشغيل الخدمة")}));
        QCOMPARE(commands(bad.menu).value(3), StatusCommand::OpenLoginSettings);
        QCOMPARE(bad.menu.size(), 12);
    }

    void icon_data()
    {
        QTest::addColumn<QImage>("logo");
        QTest::addColumn<qreal>("scale");
        for (const qreal scale : {1.0, 1.5, 2.0, 3.0}) {
            QTest::addRow("logo at %g", scale) << plainLogo() << scale;
            QTest::addRow("no logo at %g", scale) << QImage() << scale;
        }
    }
    void icon()
    {
        QFETCH(QImage, logo);
        QFETCH(qreal, scale);
        const QImage good = drawStatusIcon(logo, false, scale);
        const QImage bad = drawStatusIcon(logo, true, scale);
        QCOMPARE(good.size(), QSize(qRound(22 * scale), qRound(22 * scale)));
        QCOMPARE(bad.size(), good.size());

        // The mark fills its place and leaves the rest, with the wider margin above.
        QCOMPARE(at(good, 11, 7).alpha(), 255);
        for (const QPointF &outside : {QPointF(1, 11), QPointF(20.9, 11), QPointF(11, 1), QPointF(11, 19.9)})
            QCOMPARE(at(good, outside.x(), outside.y()).alpha(), 0);

        QCOMPARE(at(bad, 16.9, 16.9), red);
        QCOMPARE(at(bad, 16.9, 14.5), red);
        QCOMPARE(at(bad, 11, 7), at(good, 11, 7));
        for (int y = 0; y < good.height(); ++y) {
            for (int x = 0; x < good.width(); ++x) // no dot where all is fine
                QVERIFY(good.pixelColor(x, y).alpha() < 255 || good.pixelColor(x, y).red() <= 0x9d);
        }
    }

    void gapIsTransparent()
    {
        // At this scale the ring between the radii 3.3 and 4.6 holds whole pixels all the way round.
        const QImage good = drawStatusIcon(plainLogo(), false, 8);
        const QImage bad = drawStatusIcon(plainLogo(), true, 8);
        QVERIFY(at(good, 16.9, 12.95) == QColor(Qt::blue));
        for (const QPointF &inGap :
            {QPointF(16.9, 12.95), QPointF(12.95, 16.9), QPointF(14.1, 14.1), QPointF(16.9, 20.85)})
            QCOMPARE(at(bad, inGap.x(), inGap.y()).alpha(), 0);
        QCOMPARE(at(bad, 16.9, 12.0), QColor(Qt::blue));
        QCOMPARE(at(bad, 12.0, 16.9), QColor(Qt::blue));
        // On the coarsest screen the ring falls between pixels, and still the panel shows through more than the logo.
        QVERIFY(at(drawStatusIcon(plainLogo(), true, 1), 16.5, 12.5).alpha() < 128);
    }

    void iconIsDrawnForEachScale()
    {
        const QIcon icon = statusIcon(plainLogo(), true);
        for (const int side : {22, 33, 44, 66})
            QVERIFY(icon.availableSizes().contains(QSize(side, side)));
        QCOMPARE(icon.pixmap(33, 33).toImage().convertToFormat(QImage::Format_ARGB32),
            drawStatusIcon(plainLogo(), true, 1.5).convertToFormat(QImage::Format_ARGB32));
    }

    void controllerTouchesTheItemOnlyForNews()
    {
        RecordingItem item;
        StatusBarController controller(item, plainLogo());
        const auto shows = [&](const HealthSummary &health, bool login, bool approval) {
            controller.update(health, login, approval);
            return item.contents.size();
        };
        QCOMPARE(shows(fine(1), false, false), 1);
        QCOMPARE(shows(fine(1), false, false), 1);
        QCOMPARE(shows(fine(1), true, false), 2);
        QCOMPARE(shows(fine(1), true, true), 3);
        QCOMPARE(shows(broken({QStringLiteral("ا")}), true, true), 4);
        QCOMPARE(shows(broken({QStringLiteral("ا")}), true, true), 4);
        QCOMPARE(shows(fine(1), true, true), 5);
        QCOMPARE(item.contents.last(), statusContent(fine(1), true, true));
        // The same icon is handed on as the same, so that it need not be sent again.
        QVERIFY(item.icons.at(0) == item.icons.at(2) && item.icons.at(0) == item.icons.at(4));
        QVERIFY(item.icons.at(0) != item.icons.at(3));
    }

    void controllerTellsWhatIsChosen()
    {
        RecordingItem item;
        QList<StatusCommand> told;
        {
            StatusBarController controller(item, plainLogo());
            connect(&controller, &StatusBarController::commandChosen, this,
                [&told](StatusCommand command) { told.append(command); });
            item.chosen(StatusCommand::Scan);
            item.chosen(StatusCommand::Quit);
        }
        QCOMPARE(told, (QList{StatusCommand::Scan, StatusCommand::Quit}));
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
            const bool hasLogo = strip.pixelColor(centre) == QColor(Qt::blue);
            QCOMPARE(hasLogo, qstrcmp(name, "nologo") != 0);
            // 5.9 points right of and above the centre is the middle of the dot.
            const QColor dot = strip.pixelColor(centre + QPoint(12, -12));
            QCOMPARE(dot == red, qstrcmp(name, "fine") != 0);
        }
        QVERIFY(!renderPreviews(QStringLiteral("/proc/nowhere"), plainLogo()));
    }
};

QTEST_MAIN(StatusItemTest)
#include "tst_statusitem.moc"
