// The page of the guide, without the page: what is found, shown, copied and saved.
#include "guide/docsmarkdown.h"
#include "guide/doctabs.h"
#include "support/fakedesktop.h"
#include "support/manualclock.h"
#include "support/rows.h"
#include "support/testmain.h"
#include "ui/presenters/docs/docspresenter.h"
#include "ui/presenters/text/mixedtext.h"

#include <QTemporaryDir>

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

class DocsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_desktop.asked.clear();
        m_toasts.clear();
        m_toast = std::make_unique<Toast>(m_clock);
        connect(m_toast.get(), &Toast::changed, this, [this] { m_toasts.append(m_toast->text()); });
        m_docs = std::make_unique<DocsPresenter>(m_desktop, *m_toast);
    }

    void tabIsShownBlockByBlock()
    {
        QCOMPARE(m_docs->tabs().size(), 12);
        QCOMPARE(m_docs->selected(), u"start"_s);
        QCOMPARE(kinds().join(u' '), u"text heading table heading text code note code"_s);
        const QSignalSpy changed(m_docs.get(), &DocsPresenter::selectedChanged);
        m_docs->setSelected(u"nowhere"_s);
        QCOMPARE(changed.size(), 0);
        m_docs->setSelected(u"python"_s);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(kinds().join(u' '), u"code code"_s);
        QCOMPARE(shown(0, DocBlockModel::LangRole), QVariant(u"bash"_s));
        QCOMPARE(shown(0, DocBlockModel::CodeRole), QVariant(u"pip install requests"_s));
    }

    void tableIsSharedOutAndCopied()
    {
        m_docs->setSelected(u"ref"_s);
        const QVariantList shares = shown(1, DocBlockModel::SharesRole).toList();
        QCOMPARE(shares.size(), 2);
        QCOMPARE(shares[0].toDouble() + shares[1].toDouble(), 1.0);
        QVERIFY(shares[0].toDouble() > 0.2 && shares[1].toDouble() > 0.2);
        QCOMPARE(shown(1, DocBlockModel::MonoFirstRole), QVariant(true));
        const QString table = m_docs->takeTable(1);
        QVERIFY(table.startsWith(u"| الطلب | المعنى |\n|---|---|\n| GET /v1/hello | "_s));
        QVERIFY(table.contains(u"test\\|cut\\|drawer"_s) && !table.contains(QChar(0x2066)));
        QCOMPARE(m_toasts, QStringList{u"تم نسخ الجدول"_s});
        for (const int none : {-1, 0, 99})
            QCOMPARE(m_docs->takeTable(none), QString());
        m_docs->tellCodeCopied();
        QCOMPARE(m_toasts, (QStringList{u"تم نسخ الجدول"_s, u"تم نسخ الكود"_s}));
    }

    void searchFindsWhateverIsTyped()
    {
        // What is typed; the tab and the words where it is found.
        for (const QStringList &row : rowsOf(R"(
                القاعده الذهبيه        | status | القاعدة الذهبية
                مبَاشَرَةً إنترنت          | start  | بلا إنترنت
                الاصدار والنظام        | ref    | GET /v1/hello
                RATE_limited           | help   | 429 rate_limited
                idempotency-key: order | ref    | order-1042-receipt
                codabar                | ref    | barcode —
                python                 | python |)")) {
            const QList<DocHit> hits = searchDocs(docTabs(), row[0]);
            const bool found = std::ranges::any_of(hits, [&row](const DocHit &hit) {
                return hit.tabId == row[1] && hit.excerpt.size() < 175
                    && (row[2].isEmpty() ? hit.excerpt.isEmpty() : hit.excerpt.contains(row[2]));
            });
            QVERIFY2(found, qPrintable(row[0]));
        }
    }

    void searchIsBoundedAndLeadsToThePlace()
    {
        QVERIFY(!m_docs->isSearching() && m_docs->hits()->count() == 0);
        m_docs->setSearch(u"  "_s);
        QVERIFY(!m_docs->isSearching());
        m_docs->setSearch(u"xyzzy"_s);
        QVERIFY(m_docs->isSearching() && m_docs->hits()->count() == 0 && !m_docs->hasMoreHits());
        m_docs->setSearch(u"ا"_s);
        QVERIFY(m_docs->hasMoreHits());
        QCOMPARE(m_docs->hits()->count(), int(DocsPresenter::maximumHits));
        m_docs->setSearch(u"queue_stalled"_s);
        QVERIFY(!m_docs->hasMoreHits());
        QCOMPARE(m_docs->hits()->count(), 1);
        const QSignalSpy wanted(m_docs.get(), &DocsPresenter::blockWanted);
        for (const int none : {-1, 1})
            m_docs->choose(none);
        QCOMPARE(wanted.size(), 0);
        m_docs->choose(0);
        QCOMPARE(m_docs->selected(), u"status"_s);
        QVERIFY(m_docs->takeTable(wanted.value(0).value(0).toInt()).contains(u"queue_stalled"_s));
        QVERIFY(m_docs->search().isEmpty() && m_docs->hits()->count() == 0);
    }

    void exportAsksWritesAndTells()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.md"_s);
        m_docs->exportMarkdown();
        m_docs->exportMarkdown();
        QCOMPARE(m_desktop.asked.size(), 1);
        QCOMPARE(m_desktop.asked[0].question.fileName, u"Zemrak-Printer-integration.md"_s);
        QVERIFY(m_desktop.asked[0].question.kind == Desktop::FileKind::Markdown);
        m_desktop.asked[0].choose({});
        QVERIFY(!m_docs->isExporting() && m_toasts.isEmpty());

        m_docs->exportMarkdown();
        m_desktop.asked[1].choose(path);
        QVERIFY(m_docs->isExporting());
        QTRY_VERIFY(!m_docs->isExporting());
        QCOMPARE(m_toasts, QStringList{u"تم حفظ التوثيق"_s});
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()), docsMarkdown());

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"guide was not written"_s));
        m_docs->exportMarkdown();
        m_desktop.asked[2].choose(folder.filePath(u"none/a.md"_s));
        QTRY_COMPARE(m_toasts.size(), 2);
        QVERIFY(m_toasts.last().startsWith(u"تعذر حفظ التوثيق"_s));
        QVERIFY(!m_docs->isExporting());
    }

    // < and > stand for the marks that begin and end an isolated piece, L and R for those that begin a line.
    void latinIsKeptTogether()
    {
        for (const QStringList &row : rowsOf(R"(
                GET /v1/hello                     | LGET /v1/hello
                                                  | L
                سلام                              | Rسلام
                إلى /v1/pair ثم                   | Rإلى </v1/pair> ثم
                رمزًا (token).                     | Rرمزًا <(token)>.
                1) ثبّت                            | R1) ثبّت
                align (left/right)، bold          | R<align (left/right)>، <bold>
                size [العرض]                      | R<size> [العرض]
                تلقائيًا (Safari: HTTPS، والباقي)  | Rتلقائيًا (<Safari: HTTPS>، والباقي)
                أ\nb                               | Rأ\nLb)")) {
            QString shown = mixedText(QString(row[0]).replace(u"\\n"_s, u"\n"_s)).replace(u"\n"_s, u"\\n"_s);
            for (const auto &[mark, letter] :
                {std::pair{u'\u200e', u'L'}, {u'\u200f', u'R'}, {u'\u2066', u'<'}, {u'\u2069', u'>'}})
                shown.replace(mark, letter);
            QCOMPARE(shown, row[1]);
        }
    }

private:
    QVariant shown(int row, int role) { return m_docs->blocks()->data(m_docs->blocks()->index(row), role); }
    QStringList kinds()
    {
        QStringList all;
        for (int row = 0; row < m_docs->blocks()->count(); ++row)
            all += shown(row, DocBlockModel::KindRole).toString();
        return all;
    }

    FakeDesktop m_desktop;
    ManualClock m_clock;
    std::unique_ptr<Toast> m_toast;
    QStringList m_toasts;
    std::unique_ptr<DocsPresenter> m_docs;
};

ZEMRAK_TEST(docs, DocsTest, QCoreApplication)

#include "tst_docs.moc"
