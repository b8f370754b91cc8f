// Who holds the service's port: the line in the log, the record for support, and the search on a worker thread.
#include "host/portconflictreport.h"
#include "support/manualclock.h"
#include "support/testmain.h"

#include <QSemaphore>
#include <QTemporaryDir>
#include <QThread>

using namespace zemrak;
using namespace zemrak::test;
using namespace Qt::StringLiterals;

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

const PortHolder otherCopy{17731, 4711, u"node zemrak-local-print.mjs"_s, 1001, u"ali"_s};

struct Fixture
{
    QTemporaryDir folder;
    QFile record{folder.filePath(u"port-conflict.json"_s)};
    ManualClock clock;
    ScriptedHolders holders;
    std::unique_ptr<PortConflictReport> conflict
        = std::make_unique<PortConflictReport>(holders, clock, record.fileName());
    QString log;

    Fixture()
    {
        QObject::connect(conflict.get(), &PortConflictReport::logged, [this](const QString &lines) { log += lines; });
    }
    QByteArray recorded()
    {
        record.close();
        return record.open(QIODevice::ReadOnly) ? record.readAll() : QByteArray();
    }
};

} // namespace

class PortConflictTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineOfAHolder()
    {
        QCOMPARE(
            holderLine(otherCopy), u"port 17731 is held by process 4711 (node zemrak-local-print.mjs) of user ali"_s);
        QCOMPARE(holderLine({.port = 17731, .userId = 1001, .user = u"ali"_s}),
            u"port 17731 is held by a process that is not visible to this user of user ali"_s);
        QCOMPARE(holderLine({17732, 7, {}, 1001, {}}), u"port 17732 is held by process 7 of user number 1001"_s);
        QCOMPARE(holderLine({.port = 17731, .processId = 7}), u"port 17731 is held by process 7"_s);
    }

    void goesIntoLogAndRecord()
    {
        Fixture f;
        f.holders.holders = {otherCopy, {.port = 17732, .userId = 0}};
        f.conflict->report({17731, 17732});
        f.conflict->report({17731, 17732}); // while the first look is under way
        f.holders.mayFinish.release();
        QTRY_COMPARE(f.log.count(u'\n'), 2);
        QVERIFY(f.log.startsWith(holderLine(otherCopy) + u'\n'));
        QVERIFY(f.holders.looks == 1 && f.holders.offMainThread);
        const QByteArray first = f.recorded();
        QCOMPARE(f.record.permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        QCOMPARE(QJsonDocument::fromJson(first), QJsonDocument::fromJson(R"({"at":1700000000000,"holders":[
            {"port":17731,"processId":4711,"program":"node zemrak-local-print.mjs","userId":1001,"user":"ali"},
            {"port":17732,"userId":0}]})"));

        // The port became free in the meantime: that is said, and what was found stays for the report.
        f.holders.holders.clear();
        f.holders.mayFinish.release();
        f.conflict->report({17731});
        QTRY_VERIFY(f.log.endsWith(u"it may have become free\n"_s));
        QCOMPARE(f.recorded(), first);
    }

    void destroyedInTheMiddleReportsNothing()
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
