#include "designer/symbolcheck.h"
#include "support/testmain.h"

#include <QRegularExpression>
#include <QTest>

using namespace zemrak;

class SymbolCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void barcodes_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("data");
        QTest::addColumn<int>("paper");
        QTest::addColumn<QString>("told"); // a part of the line; empty = nothing is told
        const auto row = [](const char *format, const QString &data, int paper, const char *told) {
            QTest::addRow("%s %s on %d", format, qPrintable(data.left(20)), paper)
                << QString::fromLatin1(format) << data << paper << QString::fromUtf8(told);
        };
        const auto digits = [](int count) { return QStringLiteral("1234567890").repeated(9).left(count); };
        const QString capitals = QStringLiteral("ABC-1").repeated(20);
        row("ean13", QStringLiteral("4006381333931"), 58, "");
        row("ean13", QStringLiteral("400638133393"), 58, "");
        row("ean13", QStringLiteral("4006381333932"), 80, "الصحيح 1");
        row("ean13", QStringLiteral("40063813339"), 80, "12 أو 13 رقمًا، والمكتوب 11");
        row("ean13", QStringLiteral("400638133393A"), 80, "EAN-13 يقبل الأرقام");
        row("ean13", QStringLiteral("٤٠٠٦٣٨١٣٣٣٩٣١"), 80, "0 إلى 9");
        row("ean13", QStringLiteral("400638133393\n"), 80, "يقبل الأرقام");
        row("ean8", QStringLiteral("96385074"), 58, "");
        row("ean8", QStringLiteral("9638507"), 58, "");
        row("ean8", QStringLiteral("96385075"), 58, "الصحيح 4");
        row("ean8", QStringLiteral("963850744"), 58, "7 أو 8");
        row("upca", QStringLiteral("036000291452"), 58, "");
        row("upca", QStringLiteral("036000291450"), 58, "الصحيح 2");
        row("upca", QStringLiteral("1"), 58, "11 أو 12");
        row("itf", QStringLiteral("1234"), 58, "");
        row("itf", QStringLiteral("123"), 58, "زوجيًا");
        row("itf", digits(22), 58, "");
        row("itf", digits(24), 58, "هو 22 خانة، والمكتوب 24");
        row("itf", digits(34), 80, "");
        row("itf", digits(36), 80, "هو 34");
        row("code39", QStringLiteral("AB-12 $%*+./"), 80, "");
        row("code39", QStringLiteral("ab"), 80, "الكبيرة");
        row("code39", QStringLiteral("شاي"), 80, "Code 39");
        row("code39", capitals.left(11), 58, "");
        row("code39", capitals.left(12), 58, "Code 39 على ورق 58 مم هو 11");
        row("code39", capitals.left(15), 72, "");
        row("code39", capitals.left(16), 72, "هو 15");
        row("code39", capitals.left(17), 80, "");
        row("code39", capitals.left(18), 80, "هو 17");
        row("code128", QStringLiteral("a{b}~ 1"), 58, "");
        row("code128", QStringLiteral("شاي"), 80, "Code 128");
        row("code128", QStringLiteral("a\tb"), 80, "Code 128");
        row("code128", capitals.left(14), 58, "");
        row("code128", capitals.left(15), 58, "هو 14");
        row("code128", capitals.left(23), 80, "");
        row("code128", capitals.left(24), 80, "هو 23");
        row("code128", QString(), 80, "لن يُطبع");
        row("ean13", QStringLiteral("  "), 80, "لن يُطبع");
        row("codabar", QStringLiteral("whatever"), 80, "");
    }

    void barcodes()
    {
        QFETCH(const QString, format);
        QFETCH(const QString, data);
        QFETCH(const int, paper);
        QFETCH(const QString, told);
        const QString problem = barcodeProblem(format, data, paper);
        QCOMPARE(problem.isEmpty(), told.isEmpty());
        QVERIFY2(problem.contains(told), qPrintable(problem));
        static const QRegularExpression leftOver(QStringLiteral("%\\d|\n"));
        QVERIFY2(!problem.contains(leftOver), qPrintable(problem));
    }

    void qrCodes()
    {
        QVERIFY(qrProblem(QString(600, u'ش')).isEmpty());
        QVERIFY(qrProblem(QString(607, u'x')).contains(QStringLiteral("بمقدار 7")));
        QVERIFY(qrProblem(QStringLiteral(" ")).contains(QStringLiteral("لن يُطبع")));
    }

    void sizesOnPaper()
    {
        QCOMPARE(qrDots({}, 6, 80), QSize(21 * 6, 21 * 6));
        QCOMPARE(qrDots(QString(14, u'x'), 4, 58), QSize(21 * 4, 21 * 4));
        QCOMPARE(qrDots(QString(15, u'x'), 10, 58), QSize(25 * 10, 25 * 10));
        QCOMPARE(qrDots(QString(8, u'ش'), 8, 58), QSize(25 * 8, 25 * 8)); // in bytes
        QCOMPARE(qrDots(QString(600, u'x'), 10, 58), QSize(93 * 4, 93 * 4)); // as large as there is room for
        QCOMPARE(qrDots(QString(362, u'x'), 10, 72), QSize(73 * 6, 73 * 6)); // 7 dots a module would fit the paper
        QCOMPARE(qrDots(QString(9000, u'x'), 10, 58), QSize(177 * 2, 177 * 2));
        QCOMPARE(barcodeDots(QStringLiteral("ean13"), QStringLiteral("1"), 58), QSize(190, 80));
        QCOMPARE(barcodeDots(QStringLiteral("code128"), QStringLiteral("123456789"), 80).width(), 2 * (35 + 9 * 11));
        QCOMPARE(barcodeDots(QStringLiteral("code39"), QString(2000, u'A'), 72).width(), 512);
        QCOMPARE(barcodeDots(QStringLiteral("none"), {}, 72).width(), 70);
    }
};

ZEMRAK_TEST(symbolcheck, SymbolCheckTest, QCoreApplication)
#include "tst_symbolcheck.moc"
