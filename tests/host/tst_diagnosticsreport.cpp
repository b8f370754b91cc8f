#include "host/backgroundwrite.h"
#include "host/diagnosticsreport.h"
#include "support/fakedesktop.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QByteArray body("{\"a\":\"\xd8\xb7\", \"not even\":\n json\0 \xff", 28); // saved as it is, whatever it is

const QString saved = QStringLiteral("تم حفظ تقرير التشخيص");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void fill(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

mode_t modeOf(const QString &path)
{
    struct stat status
    {
    };
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// Files of this process may not grow beyond `bytes`, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit full{std::min(bytes, m_before.rlim_max), m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

/// Root may write everywhere: a test that must not does so as somebody without rights.
class WithoutRights
{
public:
    WithoutRights()
        : m_root(geteuid() == 0)
    {
        constexpr uid_t nobody = 65534;
        m_dropped = !m_root || seteuid(nobody) == 0;
    }
    ~WithoutRights() { restore(); }
    [[nodiscard]] bool dropped() const { return m_dropped; }
    void restore() const
    {
        if (m_root && seteuid(0) != 0)
            qFatal("Rights are not given back");
    }

private:
    bool m_root;
    bool m_dropped = false;
};

struct Fixture
{
    ManualClock clock;
    RecordingService service;
    FakeDesktop desktop;
    DiagnosticsReport report{service, desktop, clock};
    QStringList notices;
    QTemporaryDir folder;

    Fixture()
    {
        QObject::connect(&report, &DiagnosticsReport::notice, [this](const QString &text) { notices.append(text); });
    }

    [[nodiscard]] QString path(const char *name) const { return folder.filePath(QString::fromUtf8(name)); }
    void fetch()
    {
        report.exportDiagnostics();
        service.requests.last().answer(body);
    }
    [[nodiscard]] QStringList files() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
};

} // namespace

class DiagnosticsReportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void savesWhatTheServiceSent()
    {
        const mode_t mask = umask(0); // forbids nothing: the mode is the writer's doing
        Fixture f;
        f.clock.advance(1999ms);
        f.report.exportDiagnostics();
        QCOMPARE(f.service.requests.size(), 1);
        QCOMPARE(f.service.requests[0].method, QByteArray("GET"));
        QCOMPARE(f.service.requests[0].path, QStringLiteral("/admin/diagnostics"));
        QCOMPARE(f.service.requests[0].timeout, 20s);
        f.service.requests[0].answer(body);
        QCOMPARE(f.desktop.asked.size(), 1);
        QCOMPARE(f.desktop.asked[0].question.fileName, QStringLiteral("Zemrak-Printer-diagnostics-1700000001.json"));
        QCOMPARE(f.desktop.asked[0].question.kind, Desktop::FileKind::Json);

        const QString path = f.path("تقرير الدعم #1 100%.json");
        f.desktop.asked[0].choose(path);
        QVERIFY(f.notices.isEmpty()); // it is not written yet
        QTRY_COMPARE(f.notices, QStringList{saved});
        QCOMPARE(contentOf(path), body);
        QCOMPARE(modeOf(path), mode_t(0600));
        QCOMPARE(f.desktop.revealed, QStringList{path});
        QCOMPARE(f.files().size(), 1);
        QVERIFY(!f.report.isExporting());
        umask(mask);
    }

    void replacesAnExistingFileWhole()
    {
        Fixture f;
        const QString path = f.path("old.json");
        fill(path, QByteArray(100'000, 'x'));
        QVERIFY(
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther));
        QFile reader(path);
        QVERIFY(reader.open(QIODevice::ReadOnly));
        f.fetch();
        f.desktop.asked[0].choose(path);
        QTRY_COMPARE(f.notices, QStringList{saved});
        QCOMPARE(contentOf(path), body);
        QCOMPARE(modeOf(path), mode_t(0600));
        QCOMPARE(reader.readAll().size(), 100'000); // another file took its place; it was not emptied
    }

    void noReportNoDialogAndNoPlaceNoFile()
    {
        Fixture f;
        for (const PrintService::Answer &answer : {PrintService::Answer(), PrintService::Answer("")}) {
            f.notices.clear();
            f.report.exportDiagnostics();
            f.service.requests.last().answer(answer);
            QCOMPARE(f.notices, QStringList{QStringLiteral("تعذر إنشاء التقرير")});
        }
        QVERIFY(f.desktop.asked.isEmpty());

        f.notices.clear();
        for (const std::optional<QString> &place : {std::optional<QString>(), std::optional(QString())}) {
            f.fetch();
            f.desktop.asked.takeLast().choose(place);
            QVERIFY(!f.report.isExporting());
        }
        QVERIFY(f.notices.isEmpty() && f.desktop.revealed.isEmpty());
    }

    void secondPressOpensNoSecondDialog()
    {
        Fixture f;
        const QSignalSpy changes(&f.report, &DiagnosticsReport::exportingChanged);
        f.report.exportDiagnostics();
        f.report.exportDiagnostics();
        QCOMPARE(f.service.requests.size(), 1);
        f.service.requests[0].answer(body);
        f.report.exportDiagnostics();
        QCOMPARE(f.service.requests.size(), 1);
        QCOMPARE(f.desktop.asked.size(), 1);
        QCOMPARE(changes.size(), 1);
        f.desktop.asked[0].choose(std::nullopt);
        QCOMPARE(changes.size(), 2);
    }

    void failedWriteNeverClaimsSuccess_data()
    {
        QTest::addColumn<QString>("where");
        QTest::newRow("no such folder") << QStringLiteral("gone/report.json");
        QTest::newRow("a folder") << QStringLiteral("folder");
        QTest::newRow("below a file") << QStringLiteral("old.json/report.json");
        QTest::newRow("read-only folder") << QStringLiteral("locked/old.json");
        QTest::newRow("full disk") << QStringLiteral("old.json");
    }
    void failedWriteNeverClaimsSuccess()
    {
        QFETCH(const QString, where);
        const bool full = where == QLatin1String("old.json");
        Fixture f;
        QVERIFY(QDir(f.folder.path()).mkdir(QStringLiteral("folder")));
        QVERIFY(QDir(f.folder.path()).mkdir(QStringLiteral("locked")));
        fill(f.path("old.json"), "old");
        fill(f.path("locked/old.json"), "old");
        QVERIFY(chmod(qPrintable(f.path("locked")), 0555) == 0 && chmod(qPrintable(f.folder.path()), 0755) == 0);
        f.fetch();
        {
            const WithoutRights nobody;
            QVERIFY(nobody.dropped());
            if (full)
                nobody.restore();
            const FullDisk disk(full ? 10 : RLIM_INFINITY);
            f.desktop.asked[0].choose(QDir(f.folder.path()).absoluteFilePath(where));
            QTRY_COMPARE(f.notices.size(), 1);
        }
        QVERIFY(f.notices[0].startsWith(QStringLiteral("تعذر حفظ التقرير")));
        QVERIFY(f.desktop.revealed.isEmpty());
        QVERIFY(!f.report.isExporting());
        QCOMPARE(contentOf(f.path("old.json")), QByteArray("old"));
        QCOMPARE(contentOf(f.path("locked/old.json")), QByteArray("old"));
        QCOMPARE(f.files(), QStringList{QStringLiteral("old.json")});
        QCOMPARE(chmod(qPrintable(f.path("locked")), 0755), 0);
    }

    // The page that asked may be gone before a slow stick has taken the file.
    void writingOutlivesWhoAsked()
    {
        QSemaphore disk;
        std::atomic<int> written = 0;
        int told = 0;
        const auto write = [&disk, &written] {
            disk.acquire();
            ++written;
            return QStringLiteral("fault");
        };
        auto asking = std::make_unique<QObject>();
        writeInBackground(asking.get(), write, [&told](const QString &) { ++told; });
        asking.reset();
        disk.release();
        QTRY_COMPARE(written.load(), 1);

        QObject staying;
        QString fault;
        writeInBackground(&staying, write, [&](const QString &what) {
            fault = what;
            ++told;
        });
        disk.release();
        QTRY_COMPARE(fault, QStringLiteral("fault"));
        QCOMPARE(told, 1);
        QTRY_COMPARE(staying.children().size(), 0);
    }
};

ZEMRAK_TEST(diagnosticsreport, DiagnosticsReportTest, QCoreApplication)
#include "tst_diagnosticsreport.moc"
