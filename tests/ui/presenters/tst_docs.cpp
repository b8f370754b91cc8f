// The page of the guide, without the page: what is found, shown, copied and saved.
#include "guide/docsmarkdown.h"
#include "guide/doctabs.h"
#include "support/fakedesktop.h"
#include "support/manualclock.h"
#include "support/testmain.h"
#include "ui/presenters/docs/docspresenter.h"
#include "ui/presenters/text/mixedtext.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace zemrak;
using namespace zemrak::test;

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
        QCOMPARE(m_docs->selected(), QStringLiteral("start"));
        QCOMPARE(kinds().join(u' '), QStringLiteral("text heading table heading text code note code"));
        const QSignalSpy changed(m_docs.get(), &DocsPresenter::selectedChanged);
        m_docs->setSelected(QStringLiteral("nowhere"));
        QCOMPARE(changed.size(), 0);
        m_docs->setSelected(QStringLiteral("python"));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(kinds().join(u' '), QStringLiteral("code code"));
        QCOMPARE(shown(0, DocBlockModel::LangRole), QVariant(QStringLiteral("bash")));
        QCOMPARE(shown(0, DocBlockModel::CodeRole), QVariant(QStringLiteral("pip install requests")));
    }

    void tableIsSharedOutAndCopied()
    {
        m_docs->setSelected(QStringLiteral("ref"));
        const QVariantList shares = shown(1, DocBlockModel::SharesRole).toList();
        QCOMPARE(shares.size(), 2);
        QCOMPARE(shares[0].toDouble() + shares[1].toDouble(), 1.0);
        QVERIFY(shares[0].toDouble() > 0.2 && shares[1].toDouble() > 0.2);
        QCOMPARE(shown(1, DocBlockModel::MonoFirstRole), QVariant(true));
        const QString table = m_docs->takeTable(1);
        QVERIFY(table.startsWith(QStringLiteral("| الطلب | المعنى |\n|---|---|\n| GET /v1/hello | ")));
        QVERIFY(table.contains(QStringLiteral("test\\|cut\\|drawer")) && !table.contains(QChar(0x2066)));
        QCOMPARE(m_toasts, QStringList{QStringLiteral("تم نسخ الجدول")});
        for (const int none : {-1, 0, 99})
            QCOMPARE(m_docs->takeTable(none), QString());
        m_docs->tellCodeCopied();
        QCOMPARE(m_toasts, (QStringList{QStringLiteral("تم نسخ الجدول"), QStringLiteral("تم نسخ الكود")}));
    }

    void searchFindsWhateverIsTyped_data()
    {
        QTest::addColumn<QString>("search");
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QString>("excerpt");
        const auto row = [](const char *search, const char *tab, const char *excerpt) {
            QTest::newRow(search) << QString::fromUtf8(search) << QString::fromLatin1(tab)
                                  << QString::fromUtf8(excerpt);
        };
        row("القاعده الذهبيه", "status", "القاعدة الذهبية");
        row("مبَاشَرَةً إنترنت", "start", "بلا إنترنت");
        row("الاصدار والنظام", "ref", "GET /v1/hello");
        row("RATE_limited", "help", "429 rate_limited");
        row("idempotency-key: order", "ref", "order-1042-receipt");
        row("codabar", "ref", "barcode — ");
        row("python", "python", "");
    }
    void searchFindsWhateverIsTyped()
    {
        QFETCH(QString, search);
        QFETCH(QString, tab);
        QFETCH(QString, excerpt);
        const QList<DocHit> hits = searchDocs(docTabs(), search);
        const bool found = std::ranges::any_of(hits, [&](const DocHit &hit) {
            return hit.tabId == tab && hit.excerpt.size() < 175
                && (excerpt.isEmpty() ? hit.excerpt.isEmpty() : hit.excerpt.contains(excerpt));
        });
        QVERIFY2(found, qPrintable(QString::number(hits.size())));
    }

    void searchIsBoundedAndLeadsToThePlace()
    {
        QVERIFY(!m_docs->isSearching() && m_docs->hits()->count() == 0);
        m_docs->setSearch(QStringLiteral("  "));
        QVERIFY(!m_docs->isSearching());
        m_docs->setSearch(QStringLiteral("xyzzy"));
        QVERIFY(m_docs->isSearching() && m_docs->hits()->count() == 0 && !m_docs->hasMoreHits());
        m_docs->setSearch(QStringLiteral("ا"));
        QVERIFY(m_docs->hasMoreHits());
        QCOMPARE(m_docs->hits()->count(), int(DocsPresenter::maximumHits));
        m_docs->setSearch(QStringLiteral("queue_stalled"));
        QVERIFY(!m_docs->hasMoreHits());
        QCOMPARE(m_docs->hits()->count(), 1);
        const QSignalSpy wanted(m_docs.get(), &DocsPresenter::blockWanted);
        for (const int none : {-1, 1})
            m_docs->choose(none);
        QCOMPARE(wanted.size(), 0);
        m_docs->choose(0);
        QCOMPARE(m_docs->selected(), QStringLiteral("status"));
        QCOMPARE(wanted.value(0), QVariantList{3});
        QVERIFY(m_docs->search().isEmpty() && m_docs->hits()->count() == 0);
        QCOMPARE(kinds().value(3), QStringLiteral("table"));
    }

    void exportAsksWritesAndTells()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a.md"));
        m_docs->exportMarkdown();
        m_docs->exportMarkdown();
        QCOMPARE(m_desktop.asked.size(), 1);
        QCOMPARE(m_desktop.asked[0].question.fileName, QStringLiteral("Zemrak-Printer-integration.md"));
        QVERIFY(m_desktop.asked[0].question.kind == Desktop::FileKind::Markdown);
        m_desktop.asked[0].choose({});
        QVERIFY(!m_docs->isExporting() && m_toasts.isEmpty());

        m_docs->exportMarkdown();
        m_desktop.asked[1].choose(path);
        QVERIFY(m_docs->isExporting());
        QTRY_VERIFY(!m_docs->isExporting());
        QCOMPARE(m_toasts, QStringList{QStringLiteral("تم حفظ التوثيق")});
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()), docsMarkdown());

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("guide was not written")));
        m_docs->exportMarkdown();
        m_desktop.asked[2].choose(folder.filePath(QStringLiteral("none/a.md")));
        QTRY_COMPARE(m_toasts.size(), 2);
        QVERIFY(m_toasts.last().startsWith(QStringLiteral("تعذر حفظ التوثيق")));
        QVERIFY(!m_docs->isExporting());
    }

    // < and > stand for the marks that begin and end an isolated piece, L and R for those that begin a line.
    void latinIsKeptTogether_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("marked");
        const auto row = [](const char *text, const char *marked) {
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(marked);
        };
        row("GET /v1/hello", "LGET /v1/hello");
        row("", "L");
        row("سلام", "Rسلام");
        row("إلى /v1/pair ثم", "Rإلى </v1/pair> ثم");
        row("رمزًا (token).", "Rرمزًا <(token)>.");
        row("1) ثبّت", "R1) ثبّت");
        row("align (left/right)، bold", "R<align (left/right)>، <bold>");
        row("size [العرض]", "R<size> [العرض]");
        row("تلقائيًا (Safari: HTTPS، والباقي)", "Rتلقائيًا (<Safari: HTTPS>، والباقي)");
        row("أ\nb", "Rأ\nLb");
    }
    void latinIsKeptTogether()
    {
        QFETCH(QString, text);
        QString shown = mixedText(text);
        const QList<QPair<char16_t, char16_t>> marks{{0x200e, u'L'}, {0x200f, u'R'}, {0x2066, u'<'}, {0x2069, u'>'}};
        for (const auto &[mark, letter] : marks)
            shown.replace(QChar(mark), QChar(letter));
        QTEST(shown, "marked");
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
