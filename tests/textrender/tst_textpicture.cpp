#include "support/testmain.h"
#include "textrender/textpicture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>

using namespace zemrak;
using zemrak::test::InRow;

namespace {

/// The box around everything black; empty when there is nothing.
QRect inkOf(const QImage &picture)
{
    QRect box;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (qGray(picture.pixel(x, y)) == 0)
                box |= QRect(x, y, 1, 1);
    return box;
}

QRect inkOf(LineOfPaper line)
{
    return inkOf(drawTextPicture(line));
}

} // namespace

class TextPictureTest : public QObject
{
    Q_OBJECT

    const int m_row = 38;

private Q_SLOTS:
    void initTestCase() { QVERIFY(loadTypeface(QStringLiteral(ZEMRAK_FONTS))); }

    void lettersAreJoined()
    {
        const int one = inkOf({.text = QStringLiteral("س")}).width();
        const int three = inkOf({.text = QStringLiteral("سسس")}).width();
        QVERIFY2(three < 3 * one, qPrintable(QStringLiteral("%1 %2").arg(one).arg(three)));
        const int apart = inkOf({.text = QStringLiteral("س\u200cس\u200cس")}).width();
        QVERIFY(apart > three);
    }

    void edges()
    {
        const QString text = QStringLiteral("سلام");
        const QRect left = inkOf({.text = text, .width = 384, .edge = LineOfPaper::Edge::Left});
        const QRect center = inkOf({.text = text, .width = 384, .edge = LineOfPaper::Edge::Center});
        const QRect right = inkOf({.text = text, .width = 384, .edge = LineOfPaper::Edge::Right});
        QVERIFY(left.left() < 6 && right.right() > 384 - 6);
        QVERIFY(std::abs(center.center().x() - 192) < 4);
        QCOMPARE(left.size(), right.size());
    }

    void pairs()
    {
        LineOfPaper line{.text = QStringLiteral("الإجمالي"),
            .opposite = QStringLiteral("1.00 SAR"),
            .width = 384,
            .edge = LineOfPaper::Edge::Right};
        QImage picture = drawTextPicture(line);
        QCOMPARE(picture.height(), m_row);
        QVERIFY(inkOf(picture).left() < 6 && inkOf(picture).right() > 384 - 6);
        const int amount = inkOf({.text = line.opposite, .width = 384}).width();
        line.text = QStringLiteral("كلمة ").repeated(20);
        picture = drawTextPicture(line);
        QVERIFY(picture.height() > 2 * m_row);
        // The long text leaves the amount's column alone, all the way down.
        QVERIFY(inkOf(picture.copy(0, 0, amount + 10, picture.height() - m_row)).isNull());
        QVERIFY(!inkOf(picture.copy(0, picture.height() - m_row, amount, m_row)).isNull());
        line.text = QStringLiteral("ك").repeated(40); // one word that cannot share a line with the amount
        QVERIFY(drawTextPicture(line).height() >= 2 * m_row);
    }

    void sizesAndColours()
    {
        const QRect small = inkOf({.text = QStringLiteral("سلام"), .width = 384});
        const QRect large = inkOf({.text = QStringLiteral("سلام"), .width = 384, .across = 2, .down = 3});
        QVERIFY(std::abs(large.width() - 2 * small.width()) <= 4);
        QVERIFY(std::abs(large.height() - 3 * small.height()) <= 6);
        QVERIFY(inkOf({.text = QStringLiteral("سلام"), .bold = true}) != inkOf({.text = QStringLiteral("سلام")}));
        const QImage plain = drawTextPicture({.text = QStringLiteral("سلام")});
        QImage inverted = drawTextPicture({.text = QStringLiteral("سلام"), .invert = true});
        inverted.invertPixels();
        QVERIFY(qGray(inverted.pixel(575, 0)) == 255 && !inkOf(inverted).isNull());
        QCOMPARE(inverted.size(), plain.size());
        QCOMPARE(plain.width(), 576);
        QCOMPARE(plain.format(), QImage::Format_Mono);
    }

    void nothingIsCutWhereLinesBreak()
    {
        for (const QString &text : {QStringLiteral("مستشفى ").repeated(40), QStringLiteral("م").repeated(300),
                 QStringLiteral("Wide words ").repeated(30), QStringLiteral("W").repeated(300)}) {
            const QImage picture = drawTextPicture({.text = text, .width = 384, .across = 2, .down = 2});
            QVERIFY(picture.height() % (2 * m_row) == 0 && picture.height() > 4 * m_row);
            const QRect ink = inkOf(picture);
            QVERIFY2(
                ink.left() >= 0 && ink.right() < 384 && ink.bottom() < picture.height() - 2, qPrintable(text.left(9)));
        }
        QCOMPARE(drawTextPicture({.text = QStringLiteral("a\r\nb\u2028\nc")}).height(), 4 * m_row);
        QCOMPARE(drawTextPicture({.text = QString()}).height(), m_row);
        QVERIFY(inkOf({.text = QStringLiteral("\x1b\x07\x7f")}).isNull());
    }

    void hostileTextEndsSoon()
    {
        const auto full = [](const QString &part) { return part.repeated(LineOfPaper::maximumLength / part.size()); };
        const std::tuple<const char *, QString> rows[] = {{"line ends", full(QStringLiteral("\n"))},
            {"words", full(QStringLiteral("ش "))}, {"one word", full(QStringLiteral("ش"))},
            {"marks", QStringLiteral("ش") + full(QStringLiteral("\u0651")).chopped(1)},
            {"embeddings", full(QStringLiteral("\u202bا\u202aa"))},
            {"isolates", full(QStringLiteral("\u2067ا\u2066a"))}, {"invisible", full(QStringLiteral("\u200b\u2060"))},
            {"lone surrogates", full(QString(QChar(0xd800)))}, {"ligatures", full(QStringLiteral("ﷺﷲ"))},
            {"pictures", full(QStringLiteral("😀"))}};
        for (const auto &[tag, text] : rows) {
            const InRow row(tag);
            for (const int size : {1, 8}) {
                QElapsedTimer timer;
                timer.start();
                const QImage picture = drawTextPicture({.text = text, .width = 64, .across = size, .down = size});
                const LineOfPaper pair{.text = text.chopped(8), .opposite = QStringLiteral("1.00 SAR"), .width = 576};
                QVERIFY(pair.problem().isEmpty());
                QVERIFY(drawTextPicture(pair).height() <= maximumPictureRows);
                QVERIFY(picture.height() <= maximumPictureRows);
                QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
            }
        }
    }

    void requests()
    {
        QString problem;
        const auto read = [&](const char *json) { return LineOfPaper::fromJson(json, &problem); };
        const auto line = read(R"({"text":"a","width":384,"align":"right","size":[2,3],"bold":true})");
        QVERIFY(line && line->across == 2 && line->down == 3 && line->bold && line->edge == LineOfPaper::Edge::Right);
        for (const char *bad : {"", "[]", "{", R"({"text":1,"width":384})", R"({"text":"a"})",
                 R"({"text":"a","width":380})", R"({"text":"a","width":1e9})", R"({"text":"a","width":-8})",
                 R"({"text":"a","width":384,"size":[0,1]})", R"({"text":"a","width":384,"size":[1]})",
                 R"({"text":"a","width":384,"size":[9,9]})", R"({"text":"a","width":384,"align":"top"})"}) {
            problem.clear();
            QVERIFY2(!read(bad) && !problem.isEmpty(), bad);
        }
        QVERIFY(!LineOfPaper({.text = QString(LineOfPaper::maximumLength + 1, u'a')}).problem().isEmpty());
    }
};

ZEMRAK_TEST(textpicture, TextPictureTest, QApplication)
#include "tst_textpicture.moc"
