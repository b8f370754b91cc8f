#include "guide/docsmarkdown.h"
#include "guide/doctabs.h"
#include "guide/guidefile.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
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

/// Calls `each` with every block of one kind in the whole guide.
template <typename Block, typename Each> void forEachBlock(Each each)
{
    for (const DocTab &tab : docTabs()) {
        for (const DocBlock &block : tab.blocks) {
            if (const auto *found = std::get_if<Block>(&block))
                each(*found);
        }
    }
}

} // namespace

class TestGuide : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksBecomeMarkdown()
    {
        const QString two = QStringLiteral("أ\nب");
        const std::pair<DocBlock, const char *> rows[] = {{DocHeading{QStringLiteral("أ")}, "\n### أ\n"},
            {DocText{two}, "\nأ\nب\n"}, {DocNote{two}, "\n> أ\nب\n"},
            {DocCode{QStringLiteral("bash"), QStringLiteral("a |\n  b")}, "\n```bash\na |\n  b\n```\n"},
            {DocTable{}, ""}, {DocTable{{{QStringLiteral("a|b"), QStringLiteral("c")}}}, "\n| a|b | c |\n|---|---|\n"},
            {DocTable{{{QStringLiteral("h")}, {QStringLiteral("a|b|c")}, {QStringLiteral("d\\|e")}}},
                "\n| h |\n|---|\n| a\\|b\\|c |\n| d\\\\|e |\n"}};
        for (const auto &[block, markdown] : rows)
            QCOMPARE(blockMarkdown(block), QString::fromUtf8(markdown));
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
            QStringLiteral("status|الحالات والأخطاء|exclamationmark.triangle|h#t#h##n"),
            QStringLiteral("printers|توصيل الطابعات|printer.fill|#htnht#n"),
            QStringLiteral("zemrak|ربط Zemrak|link|tcn#"), QStringLiteral("help|حل المشاكل|stethoscope|#")};
        QCOMPARE(tabs, expected);
    }

    // Codes and names that a developer looks for, wherever they stand.
    void guideNamesWhatTheServiceHas()
    {
        const std::pair<const char *, const char *> rows[] = {
            {"ref",
                "GET /v1/hello\nPOST /v1/pair\nGET /v1/printers\nGET /v1/printers/:id/status\n"
                "POST /v1/printers/:id/test|cut|drawer\nPOST /v1/jobs\nGET /v1/jobs/:id?after=&wait=\n"
                "GET /v1/jobs?ids=&after=&wait=\nDELETE /v1/jobs/:id"},
            {"ref", "commands\nraw\nraster\nimage\npdf"}, {"ref", "text\nfeed\nbarcode\nqr\ncut\ndrawer\nbeep"},
            {"ref",
                "cut\nopenDrawer\nfeedLines\ncopies\npaperWidthMm / dots\ndither\nmedia\nmaxWaitSeconds\ntranslate"},
            {"status", "queued\nsending\nwaiting\nprinting\ncompleted\nfailed\ncancelled"},
            {"status",
                "offline\ninterrupted\nuncertain_after_restart\nexpired_after_restart\ntimeout\nqueue_stalled\n"
                "printer_not_found\nqueue_busy\nunsupported_image / unsupported_command\n"
                "invalid_request / invalid_options / invalid_payload"},
            {"status",
                "401 unauthorized\n403 origin_not_allowed\n403 pairing_denied / 429 pairing_cooldown\n413\n421 "
                "bad_host\n"
                "400 invalid_json / incomplete / 408 timeout\n404 not_found / job_not_found\n409 printer_ambiguous\n"
                "409 drawer_disabled / cut_disabled\n409 not_cancellable\n409 idempotency_conflict\n429 rate_limited\n"
                "501 no_pdf_tool\n503 pairing_unavailable\n503 busy / stopping\n507 storage_failed"},
            {"status",
                "offline\nbusy\npaper_out / cover_open / jam\ncutter_error / printer_error\noffline_button / paused\n"
                "not_reading\nscheduler_stopped"}};
        for (const auto &[tab, cells] : rows) {
            const QStringList wanted = QString::fromUtf8(cells).split(u'\n');
            const auto &blocks = std::ranges::find(docTabs(), QString::fromLatin1(tab), &DocTab::id)->blocks;
            const auto found = std::ranges::find_if(blocks, [&wanted](const DocBlock &block) {
                QStringList first;
                if (const auto *table = std::get_if<DocTable>(&block))
                    for (const QStringList &row : table->rows.mid(1))
                        first += row.first();
                return first == wanted;
            });
            QVERIFY2(found != blocks.end() && std::get<DocTable>(*found).monoFirst(), cells);
        }
    }

    void monospacedOnlyWhereCodesStand()
    {
        int mono = 0;
        forEachBlock<DocTable>([&mono](const DocTable &table) {
            const QString title = table.rows.first().first();
            const bool prose = title == QStringLiteral("المشكلة") || title == QStringLiteral("المتصفح")
                || title == QStringLiteral("النوع");
            QVERIFY2(table.monoFirst() != prose, qPrintable(title));
            mono += table.monoFirst() ? 1 : 0;
        });
        QCOMPARE(mono, 11);
        QVERIFY(!DocTable().monoFirst());
    }

    // That each runs as it stands is tested with the service; these would not stop it.
    void samplesAreClean()
    {
        int samples = 0;
        forEachBlock<DocCode>([&samples](const DocCode &sample) {
            ++samples;
            QVERIFY2(!sample.code.contains(u'\t') && !sample.code.endsWith(u'\n'), qPrintable(sample.code));
            // Marks that only steer the direction would be in the way of whoever copies it.
            QVERIFY2(
                !sample.code.contains(QChar(0x200e)) && !sample.code.contains(QChar(0x200f)), qPrintable(sample.code));
        });
        QVERIFY(samples > 10);
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
