#include "app/servicelog.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

using namespace zemrak;

namespace {

qsizetype codePoints(const QString &text)
{
    return text.toUcs4().size();
}

} // namespace

class ServiceLogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheLastCharacters()
    {
        for (const QString &character : {QStringLiteral("x"), QStringLiteral("ع"), QStringLiteral("😀")}) {
            ServiceLog log;
            log.append(QStringLiteral("first ") + character.repeated(3994));
            QCOMPARE(codePoints(log.text()), 4000);
            QVERIFY(log.text().startsWith(QLatin1String("first ")));
            log.append(QStringLiteral("end"));
            QCOMPARE(codePoints(log.text()), 4000);
            QVERIFY(log.text().startsWith(QLatin1String("st ")) && log.text().endsWith(QLatin1String("end")));
            log.append(character.repeated(100'000));
            QCOMPARE(log.text(), character.repeated(4000));
        }
    }

    // A letter and its marks go together: a mark without its letter would stand on nothing.
    void cutNeverBreaksACharacter()
    {
        const QString marked = QStringLiteral("e\u0301\u0302");
        for (int filler = 3994; filler <= 4000; ++filler) {
            ServiceLog log;
            log.append(marked + marked + QString(filler, QLatin1Char('x')));
            QVERIFY(codePoints(log.text()) <= 4000);
            QVERIFY2(log.text().startsWith(QLatin1Char('e')) || log.text().startsWith(QLatin1Char('x')),
                qPrintable(log.text().left(4)));
            QVERIFY(codePoints(log.text()) >= filler);
        }
        const QString family = QStringLiteral("👨‍👩‍👧");
        const QString cut = lastCharacters(family + QStringLiteral("abc"), 4);
        QCOMPARE(cut, QStringLiteral("abc"));
        // No real character is this long; the cut then only keeps the count.
        const QString endless = QStringLiteral("a") + QString(9000, QChar(0x0301));
        QCOMPARE(lastCharacters(endless, 4000).size(), 4000);
    }

    void tellsOfChangesOnly()
    {
        ServiceLog log;
        QSignalSpy changed(&log, &ServiceLog::changed);
        log.append({});
        log.replace({});
        QCOMPARE(changed.count(), 0);
        log.append(QStringLiteral("a"));
        log.replace(QStringLiteral("b"));
        log.replace(QStringLiteral("b"));
        QCOMPARE(changed.count(), 2);
        QCOMPARE(log.text(), QStringLiteral("b"));
    }
};

ZEMRAK_TEST(servicelog, ServiceLogTest, QCoreApplication)
#include "tst_servicelog.moc"
