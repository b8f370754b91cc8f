// The application's half of an update: what the service answers, and the line that a shell gets.
#include "host/detachedshell.h"
#include "host/updatecommand.h"
#include "host/updates.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"
#include "support/rows.h"
#include "support/testmain.h"

#include <QTemporaryDir>

#include <unistd.h>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString newest = u"أنت على آخر إصدار"_s;
const QString staging = u"جارٍ تنزيل التحديث والتحقق منه…"_s;
const QString stageFailed = u"تعذر التحديث (%1). البرنامج الحالي لم يتغير."_s;

QByteArray staged(const QByteArray &path, const QByteArray &version)
{
    return R"({"appPath":")" + path + R"(","version":")" + version + R"("})";
}

struct Fixture
{
    explicit Fixture(const QString &bundleName = u"Zemrak Printer"_s, bool withScript = true)
        : bundle(folder.filePath(bundleName))
    {
        QDir().mkpath(bundle.resource(QString()));
        QFile script(bundle.updateInstaller());
        if (withScript && !script.open(QIODevice::WriteOnly))
            qFatal("Cannot plant the script");
        QObject::connect(&updates, &Updates::notice, [this](const QString &text) { notices.append(text); });
        QObject::connect(&updates, &Updates::updatingChanged, [this] { order += u'u'; });
        QObject::connect(&updates, &Updates::availableUpdateChanged, [this] { order += u'a'; });
    }

    void stage(const PrintService::Answer &reply)
    {
        updates.installUpdate();
        service.requests.last().answer(reply);
    }
    void check(const PrintService::Answer &reply)
    {
        updates.checkUpdate();
        service.requests.last().answer(reply);
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
        {.startShell = [this](const QString &line) { return lines.append(line), shellStarts; },
            .terminate = [this] { ++terminated; }}};
};

} // namespace

class UpdatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void checks()
    {
        const QString notices[]
            = {newest, u"يتوفر إصدار جديد "_s, u"التحديث التلقائي غير مفعّل بعد"_s, u"تعذر فحص التحديث (%1)"_s};
        // The reply; which notice, with what; the version on offer after an earlier check found 1.1.
        const QList<QStringList> rows = rowsOf(R"(
            {"available":true,"version":"2.0"}                                | 1 | 2.0        | 2.0
            {"available":true,"version":"2.0","enabled":false,"error":"x"}    | 1 | 2.0        | 2.0
            {"available":true,"version":""}                                   | 1 |            | empty
            {"available":true}                                                | 0 |            | none
            {"available":true,"version":2}                                    | 0 |            | none
            {"available":true,"enabled":false}                                | 2 |            | none
            {"available":"true","version":"2.0"}                              | 0 |            | none
            {"available":1,"version":"2.0"}                                   | 0 |            | none
            {"available":false,"version":"2.0","enabled":true}                | 0 |            | none
            {"enabled":false}                                                 | 2 |            | none
            {"enabled":false,"error":"x"}                                     | 2 |            | none
            {"enabled":null}                                                  | 0 |            | none
            {"enabled":0,"error":"x"}                                         | 3 | x          | 1.1
            {"available":false,"enabled":true,"error":"no_archive"}           | 3 | no_archive | 1.1
            {"error":""}                                                      | 3 |            | 1.1
            {"error":{"code":"x"}}                                            | 0 |            | none
            {}                                                                | 0 |            | none
            no answer                                                         | 0 |            | none
                                                                              | 0 |            | none
            {"available":true,"version":"2.0"                                 | 0 |            | none
            [{"available":true,"version":"2.0"}]                              | 0 |            | none
            "2.0"                                                             | 0 |            | none
            {"available":true,"version":"no UTF-8"}                           | 0 |            | none)");
        for (const QStringList &row : rows) {
            Fixture f;
            f.check(R"({"available":true,"version":"1.1"})");
            f.order.clear();
            const QByteArray reply = row[0].toUtf8().replace("no UTF-8", "\xff");
            f.check(reply == "no answer" ? PrintService::Answer() : PrintService::Answer(reply));
            const QString version = f.updates.availableUpdate();
            const QString offered = version.isNull() ? u"none"_s : version.isEmpty() ? u"empty"_s : version;
            const QString notice = notices[row[1].toInt()];
            QCOMPARE(row[0] + f.notices.last() + offered,
                row[0] + (notice.contains(u"%1") ? notice.arg(row[2]) : notice + row[2]) + row[3]);
            QCOMPARE(f.order, row[3] == u"1.1" ? QString() : u"a"_s);
            QCOMPARE(f.notices.size(), 2);
            QCOMPARE(f.service.requests[1].path, u"/admin/update/check"_s);
            QCOMPARE(f.service.requests[1].method, QByteArray("POST"));
            QCOMPARE(f.service.requests[1].timeout, 5s);
        }
    }

    void handsOver()
    {
        Fixture f;
        f.updates.installUpdate();
        QVERIFY(f.updates.isUpdating());
        f.updates.installUpdate();
        QCOMPARE(f.notices, QStringList(staging));
        QCOMPARE(f.service.requests.size(), 1);
        QCOMPARE(f.service.requests.first().path, u"/admin/update/stage"_s);
        QCOMPARE(f.service.requests.first().timeout, 900s);

        f.service.requests[0].answer(staged("/home/متجر الحي/new $(x) \\\"app\\\"", "1.10.0-rc.1+b_2~3"));
        QCOMPARE(f.lines,
            QStringList(u"nohup /bin/bash '%1/resources/install-update.sh' '/home/متجر الحي/new $(x) \"app\"' '%1' %2 "
                        "1.10.0-rc.1+b_2~3 >/dev/null 2>&1 &"_s.arg(f.bundle.path())
                            .arg(getpid())));
        QCOMPARE(f.notices.last(), u"سيُعاد تشغيل البرنامج لإكمال التحديث…"_s);
        f.clock.advance(1199ms);
        QCOMPARE(f.terminated, 0);
        f.clock.advance(1ms);
        QCOMPARE(f.terminated, 1);

        f.updates.installUpdate(); // nothing starts a second one until the application has ended
        QCOMPARE(f.service.requests.size(), 1);
        f.check("{}"); // and a check may run all the same
        QCOMPARE(f.notices.last(), newest);
        f.clock.advance(10s);
        QVERIFY(f.updates.isUpdating() && f.terminated == 1 && f.order == u"u");
    }

    void failedStages()
    {
        QList<std::pair<PrintService::Answer, QString>> rows{{std::nullopt, u"unknown"_s}, {""_ba, u"unknown"_s}};
        for (const QStringList &row : rowsOf(R"(
                []                                                  | unknown
                {"appPath":"/n","version":"1"                       | unknown
                {}                                                  | unknown
                {"appPath":"/n"}                                    | unknown
                {"version":"1"}                                     | unknown
                {"appPath":null,"version":"1"}                      | unknown
                {"appPath":"/n","version":1.5}                      | unknown
                {"error":{"code":"bad_signature","message":"m"}}    | bad_signature
                {"error":{"code":""}}                               |
                {"error":{"code":7}}                                | unknown
                {"error":"bad_signature"}                           | unknown)"))
            rows.append({row[0].toUtf8(), row[1]});
        for (const char *version : {"", " ", "1 2", "1;id", "1&", "$(id)", "`id`", "1'", "1\\\"", "1\\n2", "1/2", "1*",
                 "1\\u0000", "١.٢", "1|2", ">x", "~", "~root", "1=2", "é"})
            rows.append({staged("/n", version), u"unknown"_s});
        for (const char *path : {"", "n", "./n", "~/n", "/n'", "/n';id;'", "/n\\n", "/n\\u0000", "/n\\u007f",
                 "/n\\u0085", "/n\\t", " /n", "/n\\ud800"})
            rows.append({staged(path, "1"), u"unknown"_s});
        for (const auto &[reply, code] : rows) {
            Fixture f;
            f.stage(reply);
            const QString name = QString::fromUtf8(reply.value_or("none"));
            QCOMPARE(name + f.notices.join(u'|'), name + staging + u'|' + stageFailed.arg(code));
            QVERIFY2(f.lines.isEmpty() && !f.updates.isUpdating() && f.order == u"uu", qPrintable(name));
            f.clock.advance(10s);
            QCOMPARE(f.terminated, 0);
            f.stage(staged("/n", "1"));
            QCOMPARE(f.lines.size(), 1);
        }
    }

    void ownBundleMustBeQuotable()
    {
        for (const QString &name : {u"it's"_s, u"a\nb"_s}) {
            Fixture f(name);
            f.stage(staged("/n", "1"));
            QCOMPARE(f.notices.last(), stageFailed.arg(u"unknown"_s));
            QVERIFY(f.lines.isEmpty());
        }
        const UpdateHandover good{u"/n"_s, u"/b"_s, 7, u"azAZ09.-+_~"_s};
        QVERIFY(updateCommand(u"/s"_s, good) && !updateCommand(u"s"_s, good) && !updateCommand(u"/s'"_s, good));
    }

    void failedStart()
    {
        Fixture refused;
        refused.shellStarts = false;
        Fixture withoutScript(u"bundle"_s, false);
        for (Fixture *f : {&refused, &withoutScript}) {
            f->stage(staged("/n", "1"));
            QCOMPARE(f->notices.last(), u"تعذر بدء التحديث"_s);
            f->clock.advance(10s);
            QVERIFY(!f->updates.isUpdating() && f->terminated == 0);
        }
        QVERIFY(refused.lines.size() == 1 && withoutScript.lines.isEmpty());
    }

    // The line as a real shell understands it: four arguments, a process apart from this one.
    void realShell()
    {
        QTemporaryDir folder;
        const QString root = folder.filePath(u"متجر $(touch x) \"a\" \\"_s);
        QVERIFY(QDir().mkpath(root));
        QFile script(root + u"/s"_s);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("{ printf '%s|' \"$@\" \"$XDG_ACTIVATION_TOKEN\"; ps -o sid= -p $$ || :; pwd; } "
                     ">\"$1.part\"; mv \"$1.part\" \"$1\"");
        script.close();
        qputenv("XDG_ACTIVATION_TOKEN", "token");
        const QString result = root + u"/result"_s;
        const std::optional<QString> line = updateCommand(script.fileName(), {result, root, 42, u"1.0~rc-1"_s});
        QVERIFY(startDetachedShell(*line));
        QTRY_VERIFY(QFile::exists(result));
        QFile written(result);
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QStringList fields = QString::fromUtf8(written.readAll()).split(u'|');
        QCOMPARE(fields.mid(0, 5), (QStringList{result, root, u"42"_s, u"1.0~rc-1"_s, QString()}));
        const QStringList about = fields.value(5).split(u'\n'); // its session and its folder
        QVERIFY(about.value(0).toLongLong() > 0 && about.value(0).toLongLong() != getsid(0));
        QCOMPARE(about.value(1), u"/"_s);
        QVERIFY(!startDetachedShell(*line, root + u"/no-bash"_s));
    }
};

ZEMRAK_TEST(updates, UpdatesTest, QCoreApplication)
#include "tst_updates.moc"
