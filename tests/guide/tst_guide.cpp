#include "guide/docsmarkdown.h"
#include "guide/doctabs.h"
#include "guide/guidefile.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace zemrak;

namespace {

/// Each block's kind: h(eading), t(ext), n(ote), c(ode), # for a table.
QString kindsOf(const DocTab &tab)
{
    QString kinds;
    for (const DocBlock &block : tab.blocks)
        kinds += u"htnc#"[block.index()];
    return kinds;
}

/// How a language's own program reads a sample without running it; the sample's file is added.
QStringList checkerOf(const QString &lang)
{
    static const QHash<QString, QStringList> checkers{
        {QStringLiteral("bash"), {QStringLiteral("bash"), QStringLiteral("-n")}},
        {QStringLiteral("js"), {QStringLiteral("node"), QStringLiteral("--check")}},
        {QStringLiteral("php"), {QStringLiteral("php"), QStringLiteral("-l")}},
        {QStringLiteral("python"),
            {QStringLiteral("python3"), QStringLiteral("-c"),
                QStringLiteral("import ast, sys; ast.parse(open(sys.argv[1], encoding='utf-8').read())")}}};
    return checkers.value(lang);
}

} // namespace

class TestGuide : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksBecomeMarkdown_data()
    {
        QTest::addColumn<DocBlock>("block");
        QTest::addColumn<QString>("markdown");
        const auto row = [](const char *name, const DocBlock &block, const char *text) {
            QTest::newRow(name) << block << QString::fromUtf8(text);
        };
        const QString two = QStringLiteral("أ\nب");
        row("heading", DocHeading{QStringLiteral("أ")}, "\n### أ\n");
        row("text", DocText{two}, "\nأ\nب\n");
        row("a note's second line", DocNote{two}, "\n> أ\nب\n");
        row("code", DocCode{QStringLiteral("bash"), QStringLiteral("a |\n  b")}, "\n```bash\na |\n  b\n```\n");
        row("no rows", DocTable{}, "");
        row("only a header", DocTable{{{QStringLiteral("a|b"), QStringLiteral("c")}}}, "\n| a|b | c |\n|---|---|\n");
        row("bars", DocTable{{{QStringLiteral("h")}, {QStringLiteral("a|b|c")}, {QStringLiteral("d\\|e")}}},
            "\n| h |\n|---|\n| a\\|b\\|c |\n| d\\\\|e |\n");
    }
    void blocksBecomeMarkdown()
    {
        QFETCH(DocBlock, block);
        QTEST(blockMarkdown(block), "markdown");
    }

    void tabsBecomeOneText()
    {
        const QString head
            = QString::fromUtf8("# Zemrak Printer — توثيق الربط\n\n> أُنشئ تلقائيًا من التطبيق. العنوان الأساسي: http:")
            + QStringLiteral("//127.0.0.1:17731\n");
        QCOMPARE(docsMarkdown(QList<DocTab>()), head);
        const DocTab first{QStringLiteral("a"), QStringLiteral("A"), {}, {DocText{QStringLiteral("x")}}};
        QCOMPARE(docsMarkdown({first, {QStringLiteral("b"), QStringLiteral("B"), {}, {}}}),
            head + QStringLiteral("\n## A\n\nx\n\n## B\n"));
        const QString whole = docsMarkdown();
        QVERIFY(whole.startsWith(head + QString::fromUtf8("\n## البداية\n\n")));
        QVERIFY(whole.contains(QStringLiteral("| POST /v1/printers/:id/test\\|cut\\|drawer | ")));
        QVERIFY(whole.endsWith(QStringLiteral(" |\n")));
    }

    void guideIsComplete()
    {
        QCOMPARE(readGuide(QStringLiteral(":/zemrak/guide")).faults, QStringList());
        QStringList tabs;
        for (const DocTab &tab : docTabs())
            tabs += QStringList{tab.id, tab.title, tab.icon, kindsOf(tab)}.join(QLatin1Char('|'));
        const QStringList expected{QStringLiteral("start|البداية|flag.checkered|th#htcnc"),
            QStringLiteral("js|المتصفح (JavaScript)|globe|thtchc"),
            QStringLiteral("browsers|المتصفحات|macwindow|t#h#n"),
            QStringLiteral("curl|الطرفية (curl)|terminal|thchchchchchc"),
            QStringLiteral("node|Node.js|chevron.left.forwardslash.chevron.right|tc"),
            QStringLiteral("python|Python|curlybraces|cc"), QStringLiteral("php|PHP|server.rack|tc"),
            QStringLiteral("ref|مرجع الأوامر|list.bullet.rectangle|h#nh#h#h#nc"),
            QStringLiteral("status|الحالات والأخطاء|exclamationmark.triangle|h#h##n"),
            QStringLiteral("printers|توصيل الطابعات|printer.fill|#htnht#n"),
            QStringLiteral("zemrak|ربط Zemrak|link|tcn#"), QStringLiteral("help|حل المشاكل|stethoscope|#")};
        QCOMPARE(tabs, expected);
    }

    // Codes and names that a developer looks for, wherever they stand.
    void guideNamesWhatTheServiceHas_data()
    {
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QStringList>("firstCells");
        const auto row = [](const char *id, const char *cells) {
            QTest::newRow(id) << QString::fromUtf8(id).section(QLatin1Char(' '), 0, 0)
                              << QString::fromUtf8(cells).split(QLatin1Char('\n'));
        };
        row("ref endpoints",
            "GET /v1/hello\nPOST /v1/pair\nGET /v1/printers\nGET /v1/printers/:id/status\n"
            "POST /v1/printers/:id/test|cut|drawer\nPOST /v1/jobs\nGET /v1/jobs/:id?after=&wait=\nDELETE /v1/jobs/:id");
        row("ref kinds", "commands\nraw\nraster\nimage\npdf");
        row("ref commands", "text\nfeed\nbarcode\nqr\ncut\ndrawer\nbeep");
        row("ref options",
            "cut\nopenDrawer\nfeedLines\ncopies\npaperWidthMm / dots\ndither\nmedia\nmaxWaitSeconds\ntranslate");
        row("status states", "queued\nsending\nwaiting\nprinting\ncompleted\nfailed\ncancelled");
        row("status errors",
            "offline\ninterrupted\nuncertain_after_restart\nexpired_after_restart\ntimeout\nqueue_stalled\n"
            "printer_not_found\nqueue_busy\nunsupported_image / unsupported_command\n"
            "invalid_request / invalid_options / invalid_payload");
        row("status http",
            "401 unauthorized\n403 origin_not_allowed\n403 pairing_denied / 429 pairing_cooldown\n413\n421 bad_host");
    }
    void guideNamesWhatTheServiceHas()
    {
        QFETCH(QString, tab);
        QFETCH(QStringList, firstCells);
        bool found = false;
        for (const DocBlock &block : std::ranges::find(docTabs(), tab, &DocTab::id)->blocks) {
            const auto *table = std::get_if<DocTable>(&block);
            if (table == nullptr)
                continue;
            QStringList cells;
            for (const QStringList &row : table->rows.mid(1))
                cells += row.first();
            if (cells == firstCells) {
                found = true;
                QVERIFY2(table->monoFirst(), qPrintable(table->rows.first().first()));
            }
        }
        QVERIFY(found);
    }

    void monospacedOnlyWhereCodesStand()
    {
        int mono = 0;
        for (const DocTab &tab : docTabs()) {
            for (const DocBlock &block : tab.blocks) {
                if (const auto *table = std::get_if<DocTable>(&block)) {
                    const QString title = table->rows.first().first();
                    const bool prose = title == QStringLiteral("المشكلة") || title == QStringLiteral("المتصفح")
                        || title == QStringLiteral("النوع");
                    QVERIFY2(table->monoFirst() != prose, qPrintable(title));
                    mono += table->monoFirst() ? 1 : 0;
                }
            }
        }
        QCOMPARE(mono, 10);
        QVERIFY(!DocTable().monoFirst());
    }

    void samplesAreSound_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QString>("code");
        for (const DocTab &tab : docTabs()) {
            for (const DocBlock &block : tab.blocks) {
                if (const auto *sample = std::get_if<DocCode>(&block))
                    QTest::addRow("%s %s", qPrintable(tab.id), qPrintable(sample->code.section(u'\n', 0, 0)))
                        << sample->lang << sample->code;
            }
        }
    }
    void samplesAreSound()
    {
        QFETCH(QString, lang);
        QFETCH(QString, code);
        QStringList checker = checkerOf(lang);
        QVERIFY2(!checker.isEmpty(), qPrintable(lang));
        const QTemporaryDir folder;
        const QString name
            = folder.filePath(lang == QStringLiteral("js") ? QStringLiteral("s.mjs") : QStringLiteral("s"));
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(code.toUtf8());
        file.close();
        QProcess process;
        process.start(checker.takeFirst(), checker << name);
        QVERIFY2(process.waitForFinished(), "this language's program is not installed");
        QVERIFY2(process.exitCode() == 0, process.readAllStandardError() + process.readAllStandardOutput());
        QVERIFY(!code.contains(u'\t') && !code.endsWith(u'\n'));
        // Marks that only steer the direction would be in the way of whoever runs it.
        QVERIFY(!code.contains(QChar(0x200e)) && !code.contains(QChar(0x200f)));
    }

    void damageIsNamed()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("tabs")));
        const auto put = [&folder](const char *name, const char *text) {
            QFile file(folder.filePath(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text);
        };
        QCOMPARE(readGuide(folder.path()).faults.size(), 3); // no list, which is no list, of no tabs
        put("tabs.json", R"(["good", "bad", "none"])");
        put("tabs/good.json", R"({"title": "T", "icon": "i", "blocks": [{"text": ["a", "b"]}]})");
        put("tabs/bad.json", R"({"title": "", "icon": "i", "blocks": [{"code": "js", "file": "gone"}, {"image": "x"},
            {"table": [["a", "b"], ["c"]]}, {"text": "x", "note": "y"}, {"note": "n"}]})");
        const GuideReading reading = readGuide(folder.path());
        QCOMPARE(reading.tabs.size(), 3);
        QCOMPARE(std::get<DocText>(reading.tabs[0].blocks[0]).text, QStringLiteral("a\nb"));
        QCOMPARE(kindsOf(reading.tabs[1]), QStringLiteral("n"));
        const auto faultsOf = [&reading](const QString &file) {
            return reading.faults.filter(QRegularExpression(QStringLiteral("^tabs/") + file)).size();
        };
        QCOMPARE(faultsOf(QStringLiteral("good")), 0);
        QCOMPARE(faultsOf(QStringLiteral("bad")), 5);
        QVERIFY(faultsOf(QStringLiteral("none")) > 0);
    }

    void fileIsWrittenWholeOrNotAtAll()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("دليل.md"));
        for (int time = 0; time < 2; ++time) { // and again over it
            QCOMPARE(writeGuide(path), QString());
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(QString::fromUtf8(file.readAll()), docsMarkdown());
        }
        QVERIFY(!writeGuide(folder.filePath(QStringLiteral("none/x.md"))).isEmpty());
        QVERIFY(!writeGuide(folder.path()).isEmpty());
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1);
    }
};

ZEMRAK_TEST(guide, TestGuide, QCoreApplication)

#include "tst_guide.moc"
