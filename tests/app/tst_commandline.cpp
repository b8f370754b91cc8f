#include "app/commandline.h"
#include "support/testmain.h"

#include <QRegularExpression>
#include <QTest>

using namespace zemrak;

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstMatchingModeWins()
    {
        using enum LaunchMode::Kind;
        const std::tuple<const char *, LaunchMode::Kind, const char *> rows[]
            = {{"", Interactive, ""}, {"file - -- --other", Interactive, ""}, {"--automatic-start", Interactive, ""},
                {"-platform -x --style=fusion -session 1 -reverse --qmljsdebugger=port:1", Interactive, ""},
                {"--render-menubar", Interactive, ""}, {"--export-docs", Interactive, ""},
                {"--render-menubar out", RenderMenubar, "out"},
                {"--notif-check --render-menubar out", RenderMenubar, "out"},
                {"--notif-check --render-menubar", NotificationCheck, ""},
                {"--login-item=on --notif-check", NotificationCheck, ""},
                {"--export-docs guide.md --login-item=on", ExportDocs, "guide.md"},
                {"--export-docs --notif-check", NotificationCheck, ""},
                {"--export-docs --login-item=on", ExportDocs, "--login-item=on"},
                {"x --login-item=off --login-item=on", LoginItem, "off"}, {"--login-item=On", LoginItem, "On"},
                {"--login-item= --export-docs", LoginItem, ""}, {"--login-item", Interactive, ""},
                {"file --other -x --json", Interactive, ""}, {"--notif-check --other", NotificationCheck, ""},
                {"--status", Status, ""}, {"--json --status", StatusJson, ""},
                {"--status --login-item=on", LoginItem, "on"}, {"--other --version", Version, ""}, {"-v -h", Help, ""}};
        for (const auto &[arguments, kind, operand] : rows) {
            const LaunchMode found = launchMode(QString::fromLatin1(arguments).split(u' ', Qt::SkipEmptyParts));
            QVERIFY2(found.kind == kind && found.operand == QLatin1String(operand), arguments);
        }
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
