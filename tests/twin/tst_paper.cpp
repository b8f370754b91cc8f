#include "sheet.h"
#include "support/testmain.h"

using namespace zemrak;
using namespace zemrak::paper;
using namespace zemrak::test;

class PaperTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lettersStandInTheirCells()
    {
        const Sheet sheet = Sheet("HH\n");
        const Dots &paper = sheet.receipt().paper;
        QCOMPARE(paper.width(), 576);
        QCOMPARE(paper.height(), 30);
        QCOMPARE(sheet.first("text").place, QRect(0, 0, 24, 24));
        const QRect one = inkOf(paper, {0, 0, 12, 30}).box;
        QVERIFY(one.height() > 12 && one.bottom() < 24 && one.left() >= 1 && one.right() <= 10);
        QCOMPARE(inkOf(paper, {12, 0, 12, 30}).box, one.translated(12, 0));
    }

    void styles()
    {
        const std::tuple<const char *, QByteArray, QRect> rows[] = {// of "HH"
            {"as it is", QByteArray(), QRect(0, 0, 24, 24)}, {"font B", hex("1b4d01"), QRect(0, 0, 18, 17)},
            {"double", hex("1d2111"), QRect(0, 0, 48, 48)}, {"8 by 3", hex("1d2172"), QRect(0, 0, 192, 72)},
            {"print mode: font B, tall and wide", hex("1b2131"), QRect(0, 0, 36, 34)},
            {"turned", hex("1b5601"), QRect(0, 0, 48, 12)}, {"letter spacing", hex("1b2004"), QRect(0, 0, 32, 24)},
            {"centre", hex("1b6101"), QRect(276, 0, 24, 24)}, {"right", hex("1b6102"), QRect(552, 0, 24, 24)},
            {"upside down", hex("1b7b01"), QRect(552, 0, 24, 24)},
            {"left margin", hex("1d4c2000"), QRect(32, 0, 24, 24)},
            {"margin and area, centre", hex("1d4c20001d5764001b6101"), QRect(70, 0, 24, 24)},
            {"absolute position", hex("1b246400"), QRect(100, 0, 24, 24)},
            {"back and forth", hex("1b2464001b5cf6ff"), QRect(90, 0, 24, 24)}, {"tab", hex("09"), QRect(96, 0, 24, 24)},
            {"tab stops", hex("1b4403050009"), QRect(36, 0, 24, 24)},
            {"units of 1/101 inch", hex("1d5065cb1b243200"), QRect(100, 0, 24, 24)},
            {"after a reset", hex("1d21111b61021b40"), QRect(0, 0, 24, 24)}};
        for (const auto &[tag, command, place] : rows) {
            const InRow row(tag);
            const Sheet sheet = Sheet(command + "HH\n");
            QCOMPARE(sheet.receipt().problems.size(), 0);
            const QRect found = sheet.first("text").place;
            QCOMPARE(found.size(), place.size());
            const QRect ink = inkOf(sheet.receipt().paper, {0, 0, 576, sheet.receipt().paper.height()}).box;
            QVERIFY2(place.contains(ink) && ink.width() > place.width() / 2,
                qPrintable(QStringLiteral("%1 %2").arg(ink.x()).arg(ink.y())));
        }
    }

    void boldUnderlineAndReverse()
    {
        const auto ink = [](const char *command) {
            return inkOf(Sheet(hex(command) + "n\n").receipt().paper, {0, 0, 12, 24}).dots;
        };
        const int plain = ink("");
        QVERIFY(ink("1b4501") > plain);
        QCOMPARE(ink("1b2d01"), plain + 12);
        QCOMPARE(ink("1b2d02"), plain + 24);
        QCOMPARE(ink("1d4201"), 12 * 24 - plain);
    }

    void linesAndFeeds()
    {
        const auto height = [](const QByteArray &bytes) { return Sheet(bytes).receipt().paper.height(); };
        QCOMPARE(height("a\nb\n"), 60);
        QCOMPARE(height(hex("1b3310") + "a\n"), 24); // not less than the letters
        QCOMPARE(height(hex("1b3350") + "a\n" + hex("1b32") + "b\n"), 110);
        QCOMPARE(height("a" + hex("1b4a64")), 100);
        QCOMPARE(height("a" + hex("1b6403")), 90);
        QCOMPARE(height("a\n\n" + hex("1b4b0a") + "b\n"), 80);
        const Sheet wrapped = Sheet(QByteArray(40, 'x') + '\n', Language::EscPos, 384);
        QCOMPARE(wrapped.lines(), (QStringList{QString(32, u'x'), QString(8, u'x')}));
        // Larger letters and smaller ones stand on the same lower edge.
        const Sheet mixed = Sheet("H" + hex("1d2111") + "H" + hex("1d2100") + "\n");
        QCOMPARE(mixed.first("text").place, QRect(0, 0, 36, 48));
        QCOMPARE(inkOf(mixed.receipt().paper, {0, 0, 12, 24}).dots, 0);
    }

    void codePages()
    {
        const std::tuple<const char *, Language, QByteArray, QString> rows[]
            = {{"437", Language::EscPos, hex("1b7400829ce1"), QStringLiteral("é£ß")},
                {"1256", Language::EscPos, hex("1b7432e3d1cdc8c7"), QStringLiteral("مرحبا")},
                {"720", Language::EscPos, hex("1b7420a0"), QStringLiteral("ب")},
                {"864", Language::EscPos, hex("1b7425b1ef"), QString(QChar(0x661)) + QChar(0xfee1)},
                {"858", Language::EscPos, hex("1b7413d5"), QStringLiteral("€")},
                {"1252", Language::EscPos, hex("1b741080e9"), QStringLiteral("€é")},
                {"katakana's line pieces", Language::EscPos, hex("1b740195"), QStringLiteral("─")},
                {"Germany", Language::EscPos, hex("1b52027b5d"), QStringLiteral("äÜ")},
                {"Star: 858", Language::StarLine, hex("1b1d7404d5"), QStringLiteral("€")},
                {"Star: 1252", Language::StarLine, hex("1b1d742080"), QStringLiteral("€")}};
        for (const auto &[tag, language, bytes, text] : rows) {
            const InRow row(tag);
            const Sheet sheet = Sheet(bytes + '\n', language);
            QCOMPARE(sheet.lines(), QStringList{text});
            QCOMPARE(sheet.receipt().problems.size(), 0);
        }
    }

    void pictures()
    {
        // The same 16 by 24 dots each time: black but for the dot at (15, 1).
        const QByteArray dots = hex("fffffffe") + QByteArray(44, '\xff');
        QByteArray columns(48, '\xff');
        columns[45] = '\xbf';
        const QByteArray stored = hex("30703001013110001800") + dots;
        QByteArray lines = "\x1b*rA";
        for (int y = 0; y < 24; ++y)
            lines += hex("620200") + dots.mid(2 * y, 2);
        const std::tuple<const char *, Language, QByteArray, int, int> rows[]
            = {{"GS v 0", Language::EscPos, hex("1d76300002001800") + dots, 1, 1},
                {"GS v 0, double", Language::EscPos, hex("1d76300302001800") + dots, 2, 2},
                {"ESC *", Language::EscPos, hex("1b2a211000") + columns + '\n', 1, 1},
                {"ESC *, wide", Language::EscPos, hex("1b2a201000") + columns + '\n', 2, 1},
                {"GS ( L", Language::EscPos, hex("1d284c3a00") + stored + hex("1d284c02003032"), 1, 1},
                {"GS 8 L", Language::EscPos, hex("1d384c3a000000") + stored + hex("1d284c02003032"), 1, 1},
                {"Star: ESC k", Language::StarLine, hex("1b6b0200") + dots + '\n', 1, 1},
                {"Star: ESC X", Language::StarLine, hex("1b581000") + columns + '\n', 1, 1},
                {"Star: ESC GS S", Language::StarLine, hex("1b1d53010200180000") + dots, 1, 1},
                {"Star: raster mode", Language::StarLine, lines + "\x1b*rB", 1, 1}};
        for (const auto &[tag, language, bytes, across, down] : rows) {
            const InRow row(tag);
            const Sheet sheet = Sheet(bytes, language);
            QCOMPARE(sheet.receipt().problems.size(), 0);
            QCOMPARE(sheet.receipt().printed.size(), 1);
            QCOMPARE(sheet.first("image").place, QRect(0, 0, 16 * across, 24 * down));
            for (int y = 0; y < 24 * down; ++y)
                for (int x = 0; x < 17 * across; ++x)
                    QCOMPARE(sheet.receipt().paper.at(x, y), x < 16 * across && !(x / across == 15 && y / down == 1));
        }
    }

    void bandsAreOnePicture()
    {
        Sheet sheet;
        for (int band = 0; band < 5; ++band)
            sheet.print(hex("1d76300001000200") + "\xff\xff");
        sheet.end();
        QCOMPARE(sheet.receipt().printed.size(), 1);
        QCOMPARE(sheet.first("image").place, QRect(0, 0, 8, 10));
    }

    void problemsHaveTheirPlace()
    {
        const std::tuple<const char *, QByteArray, qint64, QByteArray> rows[]
            = {{"unknown command", "ab" + hex("1b7f") + "c\n", qint64{2}, hex("1b7f")},
                {"unknown byte", QByteArray("ab\x01\n"), qint64{2}, hex("01")},
                {"unknown page", hex("1b74c8"), qint64{0}, hex("1b74c8")},
                {"undefined letter", "a" + hex("1b742081") + "\n", qint64{4}, hex("81")},
                {"unknown function", hex("1d286b03005141ff"), qint64{0}, hex("1d286b03005141ff")},
                {"unfinished", "a\n" + hex("1d7630000200ff"), qint64{2}, hex("1d7630000200ff")},
                {"too wide", hex("1d76300049000100") + QByteArray(73, '\xff'), qint64{0},
                    (hex("1d76300049000100") + QByteArray(8, '\xff'))},
                {"a barcode that cannot be", hex("1d6b0231326100"), qint64{0}, hex("1d6b0231326100")},
                {"after a cut", "abc\n" + hex("1d5600") + "d" + hex("1b7f"), qint64{1}, hex("1b7f")},
                {"alignment within a line", "a" + hex("1b6101") + "\n", qint64{1}, hex("1b6101")}};
        for (const auto &[tag, bytes, offset, shown] : rows) {
            const InRow row(tag);
            // However the bytes arrive.
            for (const qsizetype piece : {bytes.size(), qsizetype{1}, qsizetype{3}}) {
                Sheet sheet;
                for (qsizetype place = 0; place < bytes.size(); place += piece)
                    sheet.print(bytes.mid(place, piece));
                sheet.end();
                const QList<Problem> problems = sheet.receipts.last().problems;
                QCOMPARE(problems.size(), 1);
                QCOMPARE(problems.first().offset, offset);
                QCOMPARE(problems.first().bytes.toHex(' '), shown.toHex(' '));
            }
        }
    }

    void cutsAndDevice()
    {
        const Sheet sheet = Sheet("one\n" + hex("1b7000327d") + hex("1d56421e") + "two\n" + hex("1b69")
            + hex("1b2841040030010300") + hex("1d5600"));
        QCOMPARE(sheet.receipts.size(), 3);
        QCOMPARE(sheet.first("pulse").facts,
            (QJsonObject{{QStringLiteral("pin"), 2}, {QStringLiteral("milliseconds"), 100}}));
        QCOMPARE(sheet.first("cut").facts.value(QLatin1String("mode")).toString(), QStringLiteral("partial"));
        QVERIFY(sheet.receipt().cut);
        QCOMPARE(sheet.receipt().paper.height(), 60);
        QCOMPARE(sheet.receipt().bytes.size(), 13);
        QCOMPARE(sheet.receipts.at(2).printed.first().kind, QStringLiteral("buzzer"));
        QVERIFY(sheet.receipts.at(2).paper.isEmpty());
    }

    void questionsComeInTheirOrder()
    {
        const Sheet sheet = Sheet(
            hex("1d61ff") + "a\n" + hex("1d28480600303041424344") + hex("1d7201") + hex("100401") + hex("1b40"));
        QCOMPARE(sheet.requests,
            (QList<QPair<Request, QByteArray>>{{Request::AutomaticStatus, "\xff"}, {Request::ProcessId, "ABCD"},
                {Request::TransmitStatus, "\x01"}, {Request::Initialise, {}}}));
        const Sheet star = Sheet(hex("1b1e6101") + "a\n\x17", Language::StarLine);
        QCOMPARE(star.requests,
            (QList<QPair<Request, QByteArray>>{{Request::AutomaticStatus, "\x01"}, {Request::EndCounter, {}}}));
    }

    void starLine()
    {
        const Sheet sheet = Sheet(hex("1b40") + "HH\n" + hex("1b690102") + "HH\n" + hex("1b690000") + hex("1b1d6102")
                + "HH\n" + hex("071a") + hex("1b6403"),
            Language::StarLine);
        QCOMPARE(sheet.receipt().problems.size(), 0);
        QList<QRect> places;
        QStringList kinds;
        for (const Printed &event : sheet.receipt().printed) {
            kinds.append(event.kind);
            if (event.kind == QLatin1String("text"))
                places.append(event.place);
        }
        QCOMPARE(kinds.join(u' '), QStringLiteral("text text text pulse pulse cut"));
        QCOMPARE(places, (QList<QRect>{{0, 0, 24, 24}, {0, 32, 72, 48}, {552, 80, 24, 24}}));
    }

    void everythingIsBounded()
    {
        Sheet sheet;
        for (int i = 0; i < 300; ++i)
            sheet.print(hex("1b64ff")); // 300 times 255 lines
        sheet.print(QByteArray(400, '\x01')).end();
        QCOMPARE(sheet.receipt().paper.height(), limits::rows);
        QVERIFY(sheet.receipt().problems.size() <= limits::problems);
        QVERIFY(sheet.receipt().omitted > 0);
        Sheet huge;
        huge.print("a\n" + hex("1d384cffffff7f")); // a command of 2 GB
        for (int i = 0; i < 100; ++i)
            huge.print(QByteArray(64 * 1024, '\n'));
        huge.end();
        QCOMPARE(huge.receipt().problems.size(), 2);
        QCOMPARE(huge.receipt().paper.height(), 30);
    }
};

ZEMRAK_TEST(paper, PaperTest, QCoreApplication)
#include "tst_paper.moc"
