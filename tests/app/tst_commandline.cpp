#include "app/commandline.h"
#include "support/testmain.h"

#include <QRegularExpression>
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
        row("file - -- --other", Interactive);
        row("--automatic-start", Interactive);
        row("-platform -x --style=fusion -session 1 -reverse --qmljsdebugger=port:1", Interactive);
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
        row("file --other -x --json", Interactive);
        row("--notif-check --other", NotificationCheck);
        row("--status", Status);
        row("--json --status", StatusJson);
        row("--status --login-item=on", LoginItem, "on");
        row("--other --version", Version);
        row("-v -h", Help);
    }
    void firstMatchingModeWins()
    {
        QFETCH(QString, arguments);
        QFETCH(LaunchMode, mode);
        const LaunchMode found = launchMode(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        QCOMPARE(found.kind, mode.kind);
        QCOMPARE(found.operand, mode.operand);
    }

    // What the help offers is understood, and fits a terminal.
    void helpNamesOptionsThatExist()
    {
        static const QRegularExpression option(QStringLiteral("(?m)^  .*?(--[a-z-]+)( [A-Z]+|=on)?"));
        int options = 0;
        for (auto each = option.globalMatch(helpText()); each.hasNext(); ++options) {
            const QRegularExpressionMatch match = each.next();
            QString line = match.captured(1) + match.captured(2);
            const LaunchMode mode = launchMode(line.split(QLatin1Char(' ')));
            const bool starts = line == QLatin1String("--automatic-start");
            QVERIFY2((mode.kind == LaunchMode::Kind::Interactive) == starts, qPrintable(line));
        }
        QCOMPARE(options, 8);
        for (const QString &line : helpText().split(QLatin1Char('\n')))
            QVERIFY2(line.size() <= 100, qPrintable(line));
    }
};

ZEMRAK_TEST(commandline, CommandLineTest, QCoreApplication)
#include "tst_commandline.moc"
