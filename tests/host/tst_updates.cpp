#include "host/detachedshell.h"
#include "host/updatecommand.h"
#include "host/updates.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

const QString newest = QStringLiteral("أنت على آخر إصدار");
const QString staging = QStringLiteral("جارٍ تنزيل التحديث والتحقق منه…");
const QString unknownFailure = QStringLiteral("تعذر التحديث (unknown). البرنامج الحالي لم يتغير.");
const QByteArray noAnswer; // null

QByteArray staged(const QByteArray &path, const QByteArray &version)
{
    return R"({"appPath":")" + path + R"(","version":")" + version + R"("})";
}

struct Fixture
{
    explicit Fixture(const QString &bundleName = QStringLiteral("Zemrak Printer"), bool withScript = true)
        : bundle(folder.filePath(bundleName))
    {
        QDir().mkpath(bundle.resource(QString()));
        QFile script(bundle.updateInstaller());
        if (withScript && !script.open(QIODevice::WriteOnly))
            qFatal("Cannot plant the script");
        QObject::connect(&updates, &Updates::notice, [this](const QString &text) { notices.append(text); });
        QObject::connect(&updates, &Updates::updatingChanged, &updates, [this] { order += QLatin1Char('u'); });
        QObject::connect(&updates, &Updates::availableUpdateChanged, &updates, [this] { order += QLatin1Char('a'); });
    }

    void answer(const QByteArray &body) const
    {
        service.requests.last().answer(body.isNull() ? PrintService::Answer() : PrintService::Answer(body));
    }
    void stage(const QByteArray &body)
    {
        updates.installUpdate();
        answer(body);
    }

    QTemporaryDir folder;
    ApplicationBundle bundle;
    ManualClock clock;
    RecordingService service;
    QStringList notices;
    QStringList lines; ///< handed to the shell
    bool shellStarts = true;
    int terminated = 0;
    QString order; ///< signals, a letter each
    Updates updates{service, clock, bundle,
        {.startShell =
                [this](const QString &line) {
                    lines.append(line);
                    return shellStarts;
                },
            .terminate = [this] { ++terminated; }}};
};

} // namespace

class UpdatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void checks_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("available"); // after an earlier check found "1.1"
        const QString kept = QStringLiteral("1.1");
        const QString none;
        const auto row = [](const char *name, const QByteArray &reply, const QString &message,
                             const QString &available) { QTest::newRow(name) << reply << message << available; };
        const QString disabled = QStringLiteral("التحديث التلقائي غير مفعّل بعد");
        const QString failed = QStringLiteral("تعذر فحص التحديث (%1)");

        row("newer", R"({"available":true,"version":"2.0"})", QStringLiteral("يتوفر إصدار جديد 2.0"),
            QStringLiteral("2.0"));
        row("newer wins over all", R"({"available":true,"version":"2.0","enabled":false,"error":"x"})",
            QStringLiteral("يتوفر إصدار جديد 2.0"), QStringLiteral("2.0"));
        row("newer, empty version", R"({"available":true,"version":""})", QStringLiteral("يتوفر إصدار جديد "),
            QLatin1String(""));
        row("newer without version", R"({"available":true})", newest, none);
        row("newer, version a number", R"({"available":true,"version":2})", newest, none);
        row("newer without version, disabled", R"({"available":true,"enabled":false})", disabled, none);
        row("available is no truth value", R"({"available":"true","version":"2.0"})", newest, none);
        row("available is 1", R"({"available":1,"version":"2.0"})", newest, none);
        row("not newer, with version", R"({"available":false,"version":"2.0","enabled":true})", newest, none);
        row("disabled", R"({"enabled":false})", disabled, none);
        row("disabled wins over error", R"({"enabled":false,"error":"x"})", disabled, none);
        row("enabled is null", R"({"enabled":null})", newest, none);
        row("enabled is 0", R"({"enabled":0,"error":"x"})", failed.arg(QLatin1String("x")), kept);
        row("error", R"({"available":false,"enabled":true,"error":"no_archive"})",
            failed.arg(QLatin1String("no_archive")), kept);
        row("empty error", R"({"error":""})", failed.arg(QString()), kept);
        row("error is an object", R"({"error":{"code":"x"}})", newest, none);
        row("empty object", "{}", newest, none);
        row("no answer", noAnswer, newest, none);
        row("empty", "", newest, none);
        row("broken", R"({"available":true,"version":"2.0")", newest, none);
        row("list", R"([{"available":true,"version":"2.0"}])", newest, none);
        row("text", R"("2.0")", newest, none);
        row("no UTF-8", "{\"available\":true,\"version\":\"\xff\"}", newest, none);
    }
    void checks()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, message);
        QFETCH(QString, available);
        Fixture f;
        f.updates.checkUpdate();
        const RecordingService::Request asked = f.service.requests.value(0);
        QCOMPARE(asked.path, QStringLiteral("/admin/update/check"));
        QCOMPARE(asked.method, QByteArray("POST"));
        QCOMPARE(asked.timeout, 5000ms);
        f.answer(R"({"available":true,"version":"1.1"})");
        QCOMPARE(f.updates.availableUpdate(), QStringLiteral("1.1"));

        f.order.clear();
        f.updates.checkUpdate();
        f.answer(reply);
        QCOMPARE(f.notices.last(), message);
        QCOMPARE(f.updates.availableUpdate(), available);
        QCOMPARE(f.updates.availableUpdate().isNull(), available.isNull());
        QCOMPARE(f.order, QLatin1String(available == QLatin1String("1.1") ? "" : "a"));
        QCOMPARE(f.notices.size(), 2);
    }

    void handsOver()
    {
        Fixture f;
        f.updates.installUpdate();
        QVERIFY(f.updates.isUpdating());
        QCOMPARE(f.notices, QStringList(staging));
        f.updates.installUpdate();
        QCOMPARE(f.service.requests.size(), 1);
        QCOMPARE(f.service.requests.first().path, QStringLiteral("/admin/update/stage"));
        QCOMPARE(f.service.requests.first().timeout, 900'000ms);
        QCOMPARE(f.notices.size(), 1);

        f.answer(staged("/home/متجر الحي/new $(x) \\\"app\\\"", "1.10.0-rc.1+b_2~3"));
        QCOMPARE(f.lines,
            QStringList(QStringLiteral("nohup /bin/bash '%1/resources/install-update.sh' "
                                       "'/home/متجر الحي/new $(x) \"app\"' '%1' %2 1.10.0-rc.1+b_2~3 "
                                       ">/dev/null 2>&1 &")
                            .arg(f.folder.filePath(QStringLiteral("Zemrak Printer")))
                            .arg(getpid())));
        QCOMPARE(f.notices.last(), QStringLiteral("سيُعاد تشغيل البرنامج لإكمال التحديث…"));
        QVERIFY(f.updates.isUpdating());
        f.clock.advance(1199ms);
        QCOMPARE(f.terminated, 0);
        f.clock.advance(1ms);
        QCOMPARE(f.terminated, 1);

        // Still on the way out: nothing starts a second one, and a check may run all the same.
        f.updates.installUpdate();
        QCOMPARE(f.service.requests.size(), 1);
        f.updates.checkUpdate();
        f.answer("{}");
        QCOMPARE(f.notices.last(), newest);
        f.clock.advance(10s);
        QCOMPARE(f.terminated, 1);
        QCOMPARE(f.order, QLatin1String("u"));
    }

    void failedStages_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QByteArray &reply, const char *code = "unknown") {
            QTest::newRow(name)
                << reply << QStringLiteral("تعذر التحديث (%1). البرنامج الحالي لم يتغير.").arg(QLatin1String(code));
        };
        row("no answer", noAnswer);
        row("empty", "");
        row("list", "[]");
        row("broken", R"({"appPath":"/n","version":"1")");
        row("empty object", "{}");
        row("no version", R"({"appPath":"/n"})");
        row("no path", R"({"version":"1"})");
        row("path is null", R"({"appPath":null,"version":"1"})");
        row("version is a number", R"({"appPath":"/n","version":1.5})");
        row("code", R"({"error":{"code":"bad_signature","message":"m"}})", "bad_signature");
        row("empty code", R"({"error":{"code":""}})", "");
        row("code is a number", R"({"error":{"code":7}})");
        row("error is a text", R"({"error":"bad_signature"})");

        for (const char *version : {"", " ", "1 2", "1;id", "1&", "$(id)", "`id`", "1'", "1\\\"", "1\\n2", "1/2", "1*",
                 "1\\u0000", "١.٢", "1|2", ">x", "~", "~root", "1=2", "é"})
            row(qPrintable(QStringLiteral("version ") + QString::fromUtf8(version)), staged("/n", version));
        for (const char *path : {"", "n", "./n", "~/n", "/n'", "/n';id;'", "/n\\n", "/n\\u0000", "/n\\u007f",
                 "/n\\u0085", "/n\\t", " /n", "/n\\ud800"})
            row(qPrintable(QStringLiteral("path ") + QString::fromUtf8(path)), staged(path, "1"));
    }
    void failedStages()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, message);
        Fixture f;
        f.stage(reply);
        QCOMPARE(f.notices, (QStringList{staging, message}));
        QVERIFY(f.lines.isEmpty());
        QVERIFY(!f.updates.isUpdating());
        QCOMPARE(f.order, QLatin1String("uu"));
        f.clock.advance(10s);
        QCOMPARE(f.terminated, 0);

        f.stage(staged("/n", "1"));
        QCOMPARE(f.lines.size(), 1);
    }

    void ownBundleMustBeQuotable()
    {
        for (const QString &name : {QStringLiteral("it's"), QStringLiteral("a\nb")}) {
            Fixture f(name);
            f.stage(staged("/n", "1"));
            QCOMPARE(f.notices.last(), unknownFailure);
            QVERIFY(f.lines.isEmpty());
        }
        const UpdateHandover good{QStringLiteral("/n"), QStringLiteral("/b"), 7, QStringLiteral("1")};
        QVERIFY(updateCommand(QStringLiteral("/s"), good));
        QVERIFY(!updateCommand(QStringLiteral("s"), good));
        QVERIFY(!updateCommand(QStringLiteral("/s'"), good));
    }

    void failedStart()
    {
        Fixture refused;
        refused.shellStarts = false;
        Fixture withoutScript(QStringLiteral("bundle"), false);
        for (Fixture *f : {&refused, &withoutScript}) {
            f->stage(staged("/n", "1"));
            QCOMPARE(f->notices.last(), QStringLiteral("تعذر بدء التحديث"));
            QVERIFY(!f->updates.isUpdating());
            f->clock.advance(10s);
            QCOMPARE(f->terminated, 0);
        }
        QCOMPARE(refused.lines.size(), 1);
        QVERIFY(withoutScript.lines.isEmpty());
    }

    // The line as a real shell understands it: four arguments, a process apart from this one.
    void realShell()
    {
        QTemporaryDir folder;
        const QString root = folder.filePath(QStringLiteral("متجر $(touch x) \"a\" \\"));
        QVERIFY(QDir().mkpath(root));
        QFile script(root + QStringLiteral("/s"));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("{ printf '%s|' \"$@\" \"$XDG_ACTIVATION_TOKEN\"; ps -o sid= -p $$ || :; pwd; } "
                     ">\"$1.part\"; mv \"$1.part\" \"$1\"");
        script.close();
        qputenv("XDG_ACTIVATION_TOKEN", "token");
        const QString result = root + QStringLiteral("/result");
        const std::optional<QString> line = updateCommand(script.fileName(),
            {.newBundle = result, .installedBundle = root, .processId = 42, .version = QStringLiteral("1.0~rc*")});
        QVERIFY(!line);
        const std::optional<QString> good = updateCommand(script.fileName(),
            {.newBundle = result, .installedBundle = root, .processId = 42, .version = QStringLiteral("1.0~rc-1")});
        QVERIFY(startDetachedShell(*good));
        QTRY_VERIFY(QFile::exists(result));
        QFile written(result);
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QList<QByteArray> fields = written.readAll().split('|');
        QCOMPARE(fields.value(0), result.toUtf8());
        QCOMPARE(fields.value(1), root.toUtf8());
        QCOMPARE(fields.value(2), QByteArray("42"));
        QCOMPARE(fields.value(3), QByteArray("1.0~rc-1"));
        QCOMPARE(fields.value(4), QByteArray());
        const QList<QByteArray> about = fields.value(5).split('\n');
        QVERIFY(about.value(0).toLongLong() > 0);
        QVERIFY(about.value(0).toLongLong() != getsid(0));
        QCOMPARE(about.value(1), QByteArray("/"));

        QVERIFY(!startDetachedShell(*good, root + QStringLiteral("/no-bash")));
    }
};

ZEMRAK_TEST(updates, UpdatesTest, QCoreApplication)
#include "tst_updates.moc"
