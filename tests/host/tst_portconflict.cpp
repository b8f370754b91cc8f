#include "host/portconflictreport.h"
#include "support/manualclock.h"
#include "support/testmain.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace zemrak;
using namespace zemrak::test;

namespace {

/// Finds what it is told to, as soon as it is let.
class ScriptedHolders final : public PortHolders
{
public:
    QList<PortHolder> holders;
    mutable QSemaphore mayFinish;
    mutable std::atomic_int looks = 0;
    mutable std::atomic_bool offMainThread = true;

    [[nodiscard]] QList<PortHolder> find(const QList<quint16> &, const std::atomic_bool &cancelled) const override
    {
        ++looks;
        if (QThread::currentThread() == QCoreApplication::instance()->thread())
            offMainThread = false;
        while (!cancelled && !mayFinish.tryAcquire(1, 10)) { }
        return cancelled ? QList<PortHolder>() : holders;
    }
};

const PortHolder otherCopy{.port = 17731,
    .processId = 4711,
    .program = QStringLiteral("node zemrak-local-print.mjs"),
    .userId = 1001,
    .user = QStringLiteral("ali")};

struct Fixture
{
    QTemporaryDir folder;
    QString record = folder.filePath(QStringLiteral("port-conflict.json"));
    ManualClock clock;
    ScriptedHolders holders;
    std::unique_ptr<PortConflictReport> conflict = std::make_unique<PortConflictReport>(holders, clock, record);
    QString log;

    Fixture()
    {
        QObject::connect(conflict.get(), &PortConflictReport::logged, [this](const QString &lines) { log += lines; });
    }

    [[nodiscard]] QByteArray recorded() const
    {
        QFile file(record);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

} // namespace

class PortConflictTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysWhoHoldsThePort_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<PortHolder>("holder");
        const auto row = [](const char *line, const PortHolder &holder) {
            QTest::newRow(line) << QString::fromLatin1(line) << holder;
        };
        row("port 17731 is held by process 4711 (node zemrak-local-print.mjs) of user ali", otherCopy);
        row("port 17731 is held by a process that is not visible to this user of user ali",
            {.port = 17731, .userId = 1001, .user = QStringLiteral("ali")});
        row("port 17732 is held by process 7 of user number 1001", {.port = 17732, .processId = 7, .userId = 1001});
        row("port 17731 is held by process 7", {.port = 17731, .processId = 7});
    }
    void saysWhoHoldsThePort()
    {
        QFETCH(QString, line);
        QFETCH(PortHolder, holder);
        QCOMPARE(holderLine(holder), line);
    }

    void goesIntoLogAndRecord()
    {
        Fixture f;
        f.holders.holders = {otherCopy, {.port = 17732, .userId = 0}};
        f.conflict->report({17731, 17732});
        f.conflict->report({17731, 17732}); // while the first look is under way
        f.holders.mayFinish.release();
        QTRY_COMPARE(f.log.count(QLatin1Char('\n')), 2);
        QVERIFY(f.log.startsWith(holderLine(otherCopy) + QLatin1Char('\n')));
        QVERIFY(f.holders.looks == 1 && f.holders.offMainThread);

        const QByteArray first = f.recorded();
        QCOMPARE(QFile::permissions(f.record) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        const QJsonObject record = QJsonDocument::fromJson(first).object();
        QCOMPARE(record.value(QLatin1String("at")).toInteger(), f.clock.wallTime());
        const QJsonObject expected{{QStringLiteral("port"), 17731}, {QStringLiteral("processId"), 4711},
            {QStringLiteral("program"), otherCopy.program}, {QStringLiteral("userId"), 1001},
            {QStringLiteral("user"), otherCopy.user}};
        QCOMPARE(record.value(QLatin1String("holders"))[0].toObject(), expected);

        // The port became free in the meantime: that is said, and what was found stays for the report.
        f.holders.holders.clear();
        f.holders.mayFinish.release();
        f.conflict->report({17731});
        QTRY_VERIFY(f.log.endsWith(QStringLiteral("it may have become free\n")));
        QCOMPARE(f.recorded(), first);
    }

    void endInTheMiddleReportsNothing()
    {
        Fixture f;
        f.holders.holders = {otherCopy};
        f.conflict->report({17731});
        QTRY_COMPARE(f.holders.looks.load(), 1);
        f.conflict.reset();
        QCoreApplication::processEvents();
        QVERIFY(f.log.isEmpty() && f.recorded().isEmpty());
    }
};

ZEMRAK_TEST(portconflict, PortConflictTest, QCoreApplication)
#include "tst_portconflict.moc"
