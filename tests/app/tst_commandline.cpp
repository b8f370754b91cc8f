#include "app/commandline.h"

#include <QTest>

using namespace zemrak;

Q_DECLARE_METATYPE(zemrak::LaunchMode)

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstMatchingModeWins_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<LaunchMode>("mode");
        const auto row = [](const char *arguments, LaunchMode::Kind kind, const char *operand = nullptr) {
            QTest::newRow(arguments) << QString::fromLatin1(arguments)
                                     << LaunchMode{kind, QString::fromLatin1(operand)};
        };
        using enum LaunchMode::Kind;
        row("", Interactive);
        row("file --other", Interactive);
        row("--render-menubar", Interactive);
        row("--export-docs", Interactive);
        row("--render-menubar out", RenderMenubar, "out");
        row("--notif-check --render-menubar out", RenderMenubar, "out");
        row("--notif-check --render-menubar", NotificationCheck);
        row("--login-item=on --notif-check", NotificationCheck);
        row("--export-docs guide.md --login-item=on", ExportDocs, "guide.md");
        row("--export-docs --notif-check", NotificationCheck);
        row("--export-docs --login-item=on", ExportDocs, "--login-item=on");
        row("x --login-item=off --login-item=on", LoginItem, "off");
        row("--login-item=On", LoginItem, "On");
        row("--login-item= --export-docs", LoginItem, "");
        row("--login-item", Interactive);
    }
    void firstMatchingModeWins()
    {
        QFETCH(QString, arguments);
        QFETCH(LaunchMode, mode);
        const LaunchMode found = launchMode(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        QCOMPARE(found.kind, mode.kind);
        QCOMPARE(found.operand, mode.operand);
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "tst_commandline.moc"
