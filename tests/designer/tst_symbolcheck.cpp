#include "designer/symbolcheck.h"
#include "support/testmain.h"
#include "support/wiredata.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QTest>

using namespace zemrak;

namespace {

/// Rows that the service's tests read too: what is told beforehand is what becomes of it on paper.
QJsonObject symbols()
{
    return test::storedObject(QStringLiteral("designer/symbols.json"));
}

/// "x*14" is fourteen of them.
QString content(const QJsonValue &text)
{
    static const QRegularExpression repeated(
        QStringLiteral("^(.+)\\*(\\d+)$"), QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = repeated.match(text.toString());
    return match.hasMatch() ? match.captured(1).repeated(match.captured(2).toInt()) : text.toString();
}

QRegularExpression leftOver()
{
    return QRegularExpression(QStringLiteral("%\\d|\n"));
}

} // namespace

class SymbolCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void barcodesAndTheirSizes()
    {
        const QJsonArray rows = symbols().value(u"barcodes").toArray();
        QVERIFY(rows.size() > 40);
        for (const QJsonValue &row : rows) {
            const QString format = row[0].toString();
            const QString data = content(row[1]);
            const int paper = row[2].toInt();
            const QString verdict = row[3].toString();
            const QString problem = barcodeProblem(format, data, paper);
            const QString what = QStringLiteral("%1 %2: %3").arg(format, row[1].toString(), problem);
            QVERIFY2(problem.isEmpty() == (verdict == QLatin1String("printed")), qPrintable(what));
            QVERIFY2(!problem.contains(leftOver()), qPrintable(what));
            const bool isTooWide = problem.contains(QStringLiteral("أطول من عرض الورق"));
            // What no symbol holds is told with the room of the paper.
            if (verdict == QLatin1String("narrow"))
                QVERIFY2(isTooWide, qPrintable(what));
            if (verdict == QLatin1String("absent"))
                QVERIFY2(problem.contains(QStringLiteral("لن يُطبع")), qPrintable(what));
            if (!row[4].isUndefined())
                QCOMPARE(barcodeDots(format, data, paper), QSize(row[4].toInt(), 80));
        }
        QVERIFY(barcodeProblem(QStringLiteral("codabar"), QStringLiteral("whatever"), 80).isEmpty());
        QCOMPARE(barcodeDots(QStringLiteral("none"), {}, 72).width(), 70);
    }

    void whatIsTold()
    {
        const QString capitals = QStringLiteral("ABC-1").repeated(20);
        const std::tuple<const char *, QString, int, const char *> rows[]
            = {{"ean13", QStringLiteral("4006381333932"), 80, "الصحيح 1"},
                {"ean13", QStringLiteral("40063813339"), 80, "12 أو 13 رقمًا، والمكتوب 11"},
                {"ean13", QStringLiteral("400638133393A"), 80, "EAN-13 يقبل الأرقام"},
                {"ean8", QStringLiteral("963850744"), 58, "7 أو 8"}, {"itf", QStringLiteral("123"), 58, "زوجيًا"},
                {"itf", QStringLiteral("12").repeated(12), 58, "هو 22 خانة، والمكتوب 24"},
                {"code39", QStringLiteral("ab"), 80, "الكبيرة"},
                {"code39", capitals.left(12), 58, "Code 39 على ورق 58 مم هو 11"},
                {"code128", QStringLiteral("شاي"), 80, "Code 128"}};
        for (const auto &[format, data, paper, told] : rows) {
            const QString problem = barcodeProblem(QString::fromLatin1(format), data, paper);
            QVERIFY2(problem.contains(QString::fromUtf8(told)) && !problem.contains(leftOver()), qPrintable(problem));
        }
    }

    void qrCodes()
    {
        QVERIFY(qrProblem(QString(600, u'ش')).isEmpty());
        QVERIFY(qrProblem(QString(607, u'x')).contains(QStringLiteral("بمقدار 7")));
        QVERIFY(qrProblem(QStringLiteral(" ")).contains(QStringLiteral("لن يُطبع")));
    }

    void codesAndTheirSizes()
    {
        const QJsonArray rows = symbols().value(u"codes").toArray();
        QVERIFY(rows.size() > 5);
        for (const QJsonValue &row : rows)
            QCOMPARE(qrDots(content(row[0]), row[1].toInt(), row[2].toInt()), QSize(row[3].toInt(), row[3].toInt()));
        QCOMPARE(qrDots(QString(9000, u'x'), 10, 58), QSize(177 * 2, 177 * 2));
    }
};

ZEMRAK_TEST(symbolcheck, SymbolCheckTest, QCoreApplication)
#include "tst_symbolcheck.moc"
