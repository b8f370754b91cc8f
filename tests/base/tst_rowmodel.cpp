#include "base/rowmodel.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace zemrak;

namespace {

struct Entry
{
    QString id;
    QString title;
    int number = 0;

    bool operator==(const Entry &) const = default;
};

class Entries final : public RowModel<Entry>
{
public:
    enum Role
    {
        TitleRole = Qt::UserRole,
        NumberRole
    };
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override
    {
        return {{TitleRole, "title"}, {NumberRole, "number"}};
    }
    void touchAbove(int limit)
    {
        touch({NumberRole}, [limit](const Entry &entry) { return entry.number > limit; });
    }

protected:
    [[nodiscard]] QVariant value(const Entry &entry, int role) const override
    {
        return role == TitleRole ? QVariant(entry.title) : role == NumberRole ? QVariant(entry.number) : QVariant();
    }
};

// One row a letter.
QList<Entry> entries(const QString &letters)
{
    QList<Entry> list;
    for (const QChar letter : letters)
        list.append({QString(letter), QString(letter), letter.unicode()});
    return list;
}

QStringList ids(const QString &letters)
{
    return letters.split(QString(), Qt::SkipEmptyParts);
}

constexpr auto removal = RowEdit::Kind::Remove;
constexpr auto insertion = RowEdit::Kind::Insert;
constexpr auto shift = RowEdit::Kind::Move;

} // namespace

class RowModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void edits()
    {
        const std::tuple<const char *, const char *, QList<RowEdit>> rows[]
            = {{"", "abc", {{insertion, 0, 3}}}, {"abc", "", {{removal, 0, 3}}}, {"abc", "xabc", {{insertion, 0, 1}}},
                {"abcd", "xyab", {{removal, 2, 2}, {insertion, 0, 2}}},
                {"abcde", "ace", {{removal, 3, 1}, {removal, 1, 1}}},
                {"abcd", "bcda", {{shift, 0, 1, 3}}}, // one row moves, not three
                {"abcd", "dabc", {{shift, 3, 1, 0}}}, {"abcd", "acbd", {{shift, 1, 1, 2}}},
                {"aab", "aba", {{shift, 1, 1, 2}}}, // the second of two equal ids
                {"aa", "a", {{removal, 1, 1}}}};
        for (const auto &[before, after, edits] : rows)
            QCOMPARE(rowEdits(ids(QString::fromLatin1(before)), ids(QString::fromLatin1(after))), edits);
    }

    // Whatever the lists, following the edits ends at the new list, and the model's own tester has no complaint.
    void anyListBecomesAnyOther()
    {
        QRandomGenerator random(7);
        Entries model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        for (int round = 0; round < 500; ++round) {
            QString letters;
            for (quint32 i = random.bounded(9U); i > 0; --i)
                letters += QChar(u'a' + random.bounded(7));
            QList<Entry> next = entries(letters);
            for (Entry &entry : next)
                entry.number = random.bounded(3);
            model.setRows(next);
            QCOMPARE(model.rows(), next);
            QCOMPARE(model.count(), int(next.size()));
        }
    }

    void onlyWhatDiffersIsTold()
    {
        Entries model;
        model.setRows(entries(QStringLiteral("abc")));
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy counted(&model, &CountedListModel::countChanged);
        QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
        const QPersistentModelIndex c(model.index(2));

        model.setRows(entries(QStringLiteral("abc")));
        QVERIFY(changed.isEmpty() && counted.isEmpty() && moved.isEmpty());

        QList<Entry> next = entries(QStringLiteral("cab"));
        next[0].number = 5;
        model.setRows(next);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].toModelIndex().row(), 0);
        QCOMPARE(changed[0][2].value<QList<int>>(), QList<int>{Entries::NumberRole});
        QCOMPARE(c.row(), 0);
        QVERIFY(counted.isEmpty() && moved.size() == 1);

        changed.clear();
        model.touchAbove(50); // a and b
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].toModelIndex().row(), 1);
        QCOMPARE(changed[0][1].toModelIndex().row(), 2);
    }

    // A poll with one new row among 5,000 must not be felt; of the worst order the time is told.
    void thousandsOfRows()
    {
        QList<Entry> many;
        for (int i = 0; i < 5000; ++i)
            many.append({QStringLiteral("0f8fad5b-d9cb-469f-a165-%1").arg(i, 12, 10, QLatin1Char('0')), {}, i});
        Entries model;
        model.setRows(many);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QList<Entry> next = many;
        next.removeLast();
        next.prepend({QStringLiteral("new"), {}, 0});
        model.setRows(next);
        QVERIFY(inserted.size() == 1 && removed.size() == 1);

        QElapsedTimer timer;
        timer.start();
        std::reverse(next.begin(), next.end());
        model.setRows(next);
        qInfo("5,000 rows turned round in %lld ms", static_cast<long long>(timer.elapsed()));
        QCOMPARE(model.rows(), next);
    }
};

ZEMRAK_TEST(rowmodel, RowModelTest, QCoreApplication)
#include "tst_rowmodel.moc"
