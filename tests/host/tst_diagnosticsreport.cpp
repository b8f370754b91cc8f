// The diagnostics report: fetched, saved where the person says, whole or not at all, off the main thread.
#include "host/backgroundwrite.h"
#include "host/diagnosticsreport.h"
#include "host/privatefile.h"
#include "support/fakedesktop.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QSemaphore>
#include <QTemporaryDir>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QByteArray body("{\"a\":\"\xd8\xb7\", \"not even\":\n json\0 \xff", 28); // saved as it is, whatever it is
const QString saved = u"تم حفظ تقرير التشخيص"_s;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool fill(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

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
    void fetch(const PrintService::Answer &answer = body)
    {
        report.exportDiagnostics();
        service.requests.last().answer(answer);
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
        const QSignalSpy changes(&f.report, &DiagnosticsReport::exportingChanged);
        f.clock.advance(1999ms);
        f.fetch();
        f.report.exportDiagnostics(); // under way: no second request, no second dialog
        QCOMPARE(f.service.requests.size(), 1);
        QCOMPARE(f.service.requests[0].method, QByteArray("GET"));
        QCOMPARE(f.service.requests[0].path, u"/admin/diagnostics"_s);
        QCOMPARE(f.service.requests[0].timeout, 20s);
        QCOMPARE(f.desktop.asked.size(), 1);
        QCOMPARE(f.desktop.asked[0].question.fileName, u"Zemrak-Printer-diagnostics-1700000001.json"_s);
        QCOMPARE(f.desktop.asked[0].question.kind, Desktop::FileKind::Json);

        const QString path = f.folder.filePath(u"تقرير الدعم #1 100%.json"_s);
        QVERIFY(
            fill(path, QByteArray(100'000, 'x')) && QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadOther));
        QFile reader(path);
        QVERIFY(reader.open(QIODevice::ReadOnly));
        f.desktop.asked[0].choose(path);
        QVERIFY(f.notices.isEmpty() && f.report.isExporting()); // it is not written yet
        QTRY_COMPARE(f.notices, QStringList(saved));
        QCOMPARE(contentOf(path), body);
        QCOMPARE(reader.readAll().size(), 100'000); // another file took its place; it was not emptied
        struct stat status = {};
        QVERIFY(::stat(QFile::encodeName(path).constData(), &status) == 0 && (status.st_mode & 07777) == 0600);
        QCOMPARE(f.desktop.revealed, QStringList(path));
        QCOMPARE(QDir(f.folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
        QVERIFY(!f.report.isExporting() && changes.size() == 2);
        umask(mask);
    }

    void noReportNoDialogAndNoPlaceNoFile()
    {
        Fixture f;
        f.fetch(std::nullopt);
        f.fetch("");
        QCOMPARE(std::exchange(f.notices, {}), QStringList(2, u"تعذر إنشاء التقرير"_s));
        QVERIFY(f.desktop.asked.isEmpty());
        for (const std::optional<QString> &place : {std::optional<QString>(), std::optional(QString())}) {
            f.fetch();
            f.desktop.asked.takeLast().choose(place);
            QVERIFY(!f.report.isExporting());
        }
        f.fetch();
        f.desktop.asked.last().choose(u"/proc/report.json"_s); // where nobody may write
        QTRY_COMPARE(f.notices.size(), 1);
        QVERIFY(f.notices[0].startsWith(u"تعذر حفظ التقرير"_s));
        QVERIFY(f.desktop.revealed.isEmpty() && !f.report.isExporting());
    }

    void failedWriteLeavesWhatWasThere()
    {
        const QTemporaryDir folder;
        const QString old = folder.filePath(u"old.json"_s);
        QVERIFY(fill(old, "old") && QDir(folder.path()).mkdir(u"folder"_s));
        for (const char *where : {"gone/report.json", "folder", "old.json/report.json"})
            QVERIFY2(!writePrivateFile(folder.filePath(QLatin1String(where)), body).isEmpty(), where);
        std::signal(SIGXFSZ, SIG_IGN); // as on a full disk: files of this process may not grow beyond 10 bytes
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full{10, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
        const QString fault = writePrivateFile(old, body);
        setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(!fault.isEmpty());
        QCOMPARE(contentOf(old), QByteArray("old"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList(u"old.json"_s));
    }

    // The page that asked may be gone before a slow stick has taken the file.
    void writingOutlivesWhoAsked()
    {
        QSemaphore disk;
        QSemaphore written;
        QStringList told;
        const auto write = [&disk, &written] {
            disk.acquire();
            written.release();
            return u"fault"_s;
        };
        const auto tell = [&told](const QString &fault) { told.append(fault); };
        auto asking = std::make_unique<QObject>();
        writeInBackground(asking.get(), write, tell);
        asking.reset();
        disk.release();
        written.acquire();

        QObject staying;
        writeInBackground(&staying, write, tell);
        disk.release();
        QTRY_COMPARE(told, QStringList(u"fault"_s));
        QTRY_COMPARE(staying.children().size(), 0);
    }
};

ZEMRAK_TEST(diagnosticsreport, DiagnosticsReportTest, QCoreApplication)
#include "tst_diagnosticsreport.moc"
