#include "host/applicationbundle.h"
#include "platform/linux/browsertrust.h"
#include "support/program.h"
#include "support/testmain.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <thread>

using namespace zemrak;
using namespace zemrak::linux_;

namespace {

const QString oldShared = QStringLiteral(".pki/nssdb");
const QString newShared = QStringLiteral(".local/share/pki/nssdb");
const QString oldFirefox = QStringLiteral(".mozilla/firefox/a.default");
const QString newFirefox = QStringLiteral(".config/mozilla/firefox/b.default");

// Exit status; -1 when the tool did not end by itself.
int run(const QString &program, const QStringList &arguments, const QString &home = {})
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!home.isEmpty())
        environment.insert(QStringLiteral("HOME"), home);
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(30'000) && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool isTrusted(const QString &home, const QString &certificateFile)
{
    return BrowserTrust(home).isTrusted(certificateFile, false);
}

/// A home with a name that tools stumble over, and stores in it.
class Home
{
public:
    Home() { QDir(m_folder.path()).mkpath(QStringLiteral("متجر 'الزاوية' %1")); }

    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("متجر 'الزاوية' %1")); }
    [[nodiscard]] QString file(const QString &name) const { return path() + QLatin1Char('/') + name; }
    [[nodiscard]] QString authority() const
    {
        return file(QStringLiteral("Library/Application Support/Zemrak Local Print/tls/ca.crt"));
    }

    [[nodiscard]] int certutil(const QString &store, const QStringList &arguments) const
    {
        return run(QStringLiteral("certutil"),
            arguments + QStringList{QStringLiteral("-d"), QStringLiteral("sql:") + file(store)});
    }
    void makeFolder(const QString &name) const { QVERIFY(QDir(path()).mkpath(name)); }
    void makeStore(const QString &store) const
    {
        makeFolder(store);
        QCOMPARE(certutil(store, {QStringLiteral("-N"), QStringLiteral("--empty-password")}), 0);
    }
    void add(const QString &store, const QString &certificate, const QString &trust = QStringLiteral("C,,")) const
    {
        QCOMPARE(certutil(store,
                     {QStringLiteral("-A"), QStringLiteral("-n"), QStringLiteral("authority"), QStringLiteral("-t"),
                         trust, QStringLiteral("-i"), certificate}),
            0);
    }
    [[nodiscard]] QStringList everything() const
    {
        QStringList names;
        for (QDirIterator it(path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                 QDirIterator::Subdirectories);
             it.hasNext();)
            names.append(it.next());
        names.sort();
        return names;
    }

private:
    QTemporaryDir m_folder;
};

/// The bundled print service in a home of its own.
class Service
{
public:
    explicit Service(const Home &home)
        : m_home(home)
    {
    }
    ~Service()
    {
        m_process.terminate();
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished();
    }

    [[nodiscard]] int once(const QString &command) const
    {
        return run(m_bundle.node(), {m_bundle.serviceScript(), command}, m_home.path());
    }
    /// The HTTPS port; 0 when there is none in time.
    [[nodiscard]] quint16 start()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_home.path());
        for (const char *name : {"ZEMRAK_LP_HTTP_PORT", "ZEMRAK_LP_HTTPS_PORT"})
            environment.insert(QLatin1String(name), QStringLiteral("0"));
        environment.insert(QStringLiteral("ZEMRAK_LP_NO_OS_NOTIFY"), QStringLiteral("1"));
        environment.insert(QStringLiteral("ZEMRAK_LP_EXIT_WITH_PARENT"), QStringLiteral("1"));
        m_process.setProcessEnvironment(environment);
        m_process.start(m_bundle.node(), {m_bundle.serviceScript(), QStringLiteral("run")});
        static const QRegularExpression line(QStringLiteral("on https:..127\\.0\\.0\\.1:(\\d+)\n"));
        QByteArray output;
        QRegularExpressionMatch match;
        while (!match.hasMatch() && m_process.waitForReadyRead(15'000)) {
            output += m_process.readAllStandardOutput();
            match = line.match(QString::fromUtf8(output));
        }
        return match.captured(1).toUShort();
    }

private:
    const Home &m_home;
    ApplicationBundle m_bundle{zemrak::test::builtBundle()};
    QProcess m_process;
};

} // namespace

class CertificateTestTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_work;
    QByteArray m_path = qgetenv("PATH");

    [[nodiscard]] QString certificate(const QString &name) const
    {
        return m_work.filePath(name + QStringLiteral(".crt"));
    }
    void make(const QString &name, const QByteArray &subject, const QByteArray &constraints, const QByteArray &lastDay)
    {
        const QString configuration = m_work.filePath(name + QStringLiteral(".cnf"));
        QFile file(configuration);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[req]\ndistinguished_name=n\nprompt=no\n[n]\nCN=" + subject
            + "\n[ca]\ndefault_ca=a\n[a]\ndatabase=index\nnew_certs_dir=.\nrand_serial=yes\ndefault_md=sha256\npolicy="
              "p\n"
              "unique_subject=no\n[p]\ncommonName=supplied\n[e]\nbasicConstraints=critical,"
            + constraints + "\n");
        file.close();
        const QString script = QStringLiteral(
            "cd '%1' && touch index && exec 2>%2.log && openssl req -new -newkey ec -pkeyopt ec_paramgen_curve:P-256 "
            "-nodes -config %2.cnf -keyout %2.key -out %2.csr && openssl ca -batch -notext -config %2.cnf -selfsign "
            "-keyfile %2.key -in %2.csr -extensions e -startdate 20200101000000Z -enddate %3 -out %2.crt");
        QCOMPARE(run(QStringLiteral("sh"),
                     {QStringLiteral("-c"), script.arg(m_work.path(), name, QString::fromLatin1(lastDay))}),
            0);
    }
    void usePrograms(const Home &home, const QByteArray &vfychain)
    {
        home.makeFolder(QStringLiteral("bin"));
        if (!vfychain.isEmpty()) {
            QFile script(home.file(QStringLiteral("bin/vfychain")));
            QVERIFY(script.open(QIODevice::WriteOnly));
            script.write(vfychain + "\n");
            script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        }
        qputenv("PATH", home.file(QStringLiteral("bin")).toUtf8());
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "SSL_CERT_FILE", "SSL_CERT_DIR"})
            qunsetenv(name);
        make(QStringLiteral("good"), "Local authority", "CA:TRUE", "20991231000000Z");
        make(QStringLiteral("other"), "Local authority", "CA:TRUE", "20991231000000Z");
        make(QStringLiteral("expired"), "Local authority", "CA:TRUE", "20200201000000Z");
        make(QStringLiteral("server"), "Local authority", "CA:FALSE", "20991231000000Z");
    }
    void cleanup()
    {
        qputenv("PATH", m_path);
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "SSL_CERT_FILE"})
            qunsetenv(name);
    }

    void storesDecide_data()
    {
        using Stores = QList<QPair<QString, QString>>;
        const auto good = QStringLiteral("good C,,");
        QTest::addColumn<Stores>("stores");
        QTest::addColumn<bool>("trusted");
        const auto row
            = [](const char *name, const Stores &stores, bool trusted) { QTest::newRow(name) << stores << trusted; };
        row("no store", {}, false);
        row("old place", {{oldShared, good}}, true);
        row("new place", {{newShared, good}}, true);
        row("old place comes first", {{oldShared, good}, {newShared, {}}}, true);
        row("new place does not stand in for the old", {{oldShared, {}}, {newShared, good}}, false);
        row("nor for an old one without a database", {{oldShared, QStringLiteral("folder")}, {newShared, good}}, false);
        row("a folder without a database", {{newShared, QStringLiteral("folder")}}, false);
        row("Firefox, old place", {{oldFirefox, good}}, true);
        row("Firefox, new place", {{newFirefox, good}}, true);
        row("Firefox has not got it", {{oldShared, good}, {newFirefox, {}}}, false);
        row("only Firefox has got it", {{oldShared, {}}, {newFirefox, good}}, false);
        row("everybody has got it", {{newShared, good}, {oldFirefox, good}, {newFirefox, good}}, true);
        row("a profile never used", {{oldShared, good}, {newFirefox, QStringLiteral("folder")}}, true);
        row("another of the same name", {{oldShared, QStringLiteral("other C,,")}}, false);
        row("another of the same name beside it", {{oldShared, QStringLiteral("other C,,;good C,,")}}, true);
        row("the other one is the trusted", {{oldShared, QStringLiteral("other C,,;good ,,")}}, false);
        row("known, not trusted", {{oldShared, QStringLiteral("good ,,")}}, false);
        row("trusted for mail", {{oldShared, QStringLiteral("good ,C,")}}, false);
        row("distrusted", {{oldShared, QStringLiteral("good p,,")}}, false);
    }
    void storesDecide()
    {
        using Stores = QList<QPair<QString, QString>>;
        QFETCH(Stores, stores);
        QFETCH(bool, trusted);
        const Home home;
        for (const auto &[store, content] : stores) {
            if (content == QLatin1String("folder")) {
                home.makeFolder(store);
                continue;
            }
            home.makeStore(store);
            for (const QString &entry : content.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
                const QStringList parts = entry.split(QLatin1Char(' '));
                home.add(store, certificate(parts.value(0)), parts.value(1));
            }
        }
        const QStringList before = home.everything();
        QCOMPARE(isTrusted(home.path(), certificate(QStringLiteral("good"))), trusted);
        QCOMPARE(home.everything(), before); // a check makes no store
    }

    void certificateDecides_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("trusted");
        QTest::newRow("good") << QStringLiteral("good") << true;
        QTest::newRow("expired") << QStringLiteral("expired") << false;
        QTest::newRow("no authority at all") << QStringLiteral("server") << false;
    }
    void certificateDecides()
    {
        QFETCH(QString, name);
        QFETCH(bool, trusted);
        const Home home;
        home.makeStore(oldShared);
        home.add(oldShared, certificate(name));
        QCOMPARE(isTrusted(home.path(), certificate(name)), trusted);
        QVERIFY(!isTrusted(home.path(), certificate(QStringLiteral("missing"))));
        QVERIFY(!isTrusted(home.path(), home.file(oldShared + QStringLiteral("/pkcs11.txt"))));
        QVERIFY(!isTrusted(home.path(), home.path()));
    }

    void systemStoreDecidesAlone_data()
    {
        QTest::addColumn<QString>("inSystem");
        QTest::addColumn<QString>("asked");
        QTest::addColumn<bool>("browser");
        QTest::addColumn<bool>("trusted");
        const auto good = QStringLiteral("good");
        QTest::newRow("holds it") << good << good << false << true;
        QTest::newRow("holds another of its name") << QStringLiteral("other") << good << false << false;
        QTest::newRow("holds an expired one")
            << QStringLiteral("expired") << QStringLiteral("expired") << false << false;
        QTest::newRow("holds what a browser does not") << good << good << true << false;
    }
    void systemStoreDecidesAlone()
    {
        QFETCH(QString, inSystem);
        QFETCH(QString, asked);
        QFETCH(bool, browser);
        QFETCH(bool, trusted);
        const Home home;
        if (browser)
            home.makeStore(newShared);
        qputenv("SSL_CERT_FILE", certificate(inSystem).toUtf8());
        QCOMPARE(isTrusted(home.path(), certificate(asked)), trusted);
    }

    void toolsThatMisbehave_data()
    {
        QTest::addColumn<QByteArray>("vfychain");
        QTest::addColumn<bool>("trusted");
        QTest::newRow("not installed") << QByteArray() << false;
        QTest::newRow("cannot be launched") << QByteArray("#!/nowhere") << false;
        QTest::newRow("crashes") << QByteArray("#!/bin/sh\nkill -SEGV $$") << false;
        QTest::newRow("slow but sure") << QByteArray("#!/bin/sh\n/bin/sleep 0.3") << true;
        QTest::newRow("hangs") << QByteArray("#!/bin/sh\ntrap '' TERM; echo $$ > \"$PIDS\"; exec /bin/sleep 60")
                               << false;
    }
    void toolsThatMisbehave()
    {
        QFETCH(QByteArray, vfychain);
        QFETCH(bool, trusted);
        const Home home;
        home.makeStore(oldShared);
        home.add(oldShared, certificate(QStringLiteral("good")));
        QFile pids(home.file(QStringLiteral("pids")));
        qputenv("PIDS", pids.fileName().toUtf8());
        usePrograms(home, vfychain);
        QElapsedTimer clock;
        clock.start();
        const BrowserTrust impatient(home.path(), std::chrono::milliseconds(2500));
        QCOMPARE(impatient.isTrusted(certificate(QStringLiteral("good")), false), trusted);
        QVERIFY(clock.elapsed() < 20'000);
        QCOMPARE(pids.open(QIODevice::ReadOnly), vfychain.contains("PIDS"));
        if (pids.isOpen()) {
            const auto pid = static_cast<pid_t>(pids.readAll().trimmed().toLong());
            QVERIFY(pid > 0 && ::kill(pid, 0) != 0); // killed, and cleared away
        }
    }

    void cancelledSoonEnds()
    {
        const Home home;
        home.makeStore(oldShared);
        const QString pids = home.file(QStringLiteral("pids"));
        qputenv("PIDS", pids.toUtf8());
        usePrograms(home, "#!/bin/sh\necho $$ > \"$PIDS\"; exec /bin/sleep 60");
        std::atomic_bool cancelled = false;
        std::atomic_bool ended = false;
        std::thread worker(
            [&] { ended = !BrowserTrust(home.path()).isTrusted(certificate(QStringLiteral("good")), cancelled); });
        const auto join = qScopeGuard([&] {
            cancelled = true;
            worker.join();
        });
        QTRY_VERIFY(QFile::exists(pids));
        QVERIFY(!ended);
        cancelled = true;
        QTRY_VERIFY_WITH_TIMEOUT(ended, 3000);
    }

    // What the service writes and what is checked are the same stores, wherever a browser has put its own.
    void serviceFillsEveryStoreThatCounts_data()
    {
        QTest::addColumn<QStringList>("stores");
        QTest::newRow("none yet") << QStringList();
        QTest::newRow("old shared and profile") << QStringList{oldShared, oldFirefox};
        QTest::newRow("new shared and profile") << QStringList{newShared, newFirefox};
        QTest::newRow("named by the environment")
            << QStringList{QStringLiteral("data/pki/nssdb"), QStringLiteral("config/mozilla/firefox/c.default")};
        QStringList snaps;
        for (const char *name : {"brave", "chromium", "firefox", "opera"}) {
            const QString root = QStringLiteral("snap/%1/").arg(QLatin1String(name));
            snaps << root + QStringLiteral("current/.local/share/pki/nssdb")
                  << root + QStringLiteral("common/.mozilla/firefox/s.default");
        }
        QTest::newRow("Snap") << snaps;
        QStringList flatpaks;
        for (const char *name : {"com.brave.Browser", "com.google.Chrome", "com.microsoft.Edge", "com.opera.Opera",
                 "com.vivaldi.Vivaldi", "org.chromium.Chromium"})
            flatpaks << QStringLiteral(".var/app/%1/data/pki/nssdb").arg(QLatin1String(name));
        flatpaks << QStringLiteral(".var/app/org.mozilla.firefox/config/mozilla/firefox/f.default");
        QTest::newRow("Flatpak") << flatpaks;
    }
    void serviceFillsEveryStoreThatCounts()
    {
        QFETCH(QStringList, stores);
        const Home home;
        const Service service(home);
        if (qstrcmp(QTest::currentDataTag(), "named by the environment") == 0) {
            qputenv("XDG_CONFIG_HOME", home.file(QStringLiteral("config")).toUtf8());
            qputenv("XDG_DATA_HOME", home.file(QStringLiteral("data")).toUtf8());
        }
        for (const QString &store : stores)
            home.makeStore(store);
        QCOMPARE(service.once(QStringLiteral("init-tls")), 0);
        QVERIFY(!isTrusted(home.path(), home.authority()));
        QCOMPARE(service.once(QStringLiteral("trust-ca")), 0);
        QVERIFY(isTrusted(home.path(), home.authority()));
        for (const QString &store : stores) { // each of them counts
            QCOMPARE(home.certutil(
                         store, {QStringLiteral("-D"), QStringLiteral("-n"), QStringLiteral("Zemrak Local Print CA")}),
                0);
            QVERIFY2(!isTrusted(home.path(), home.authority()), qPrintable(store));
            home.add(store, home.authority());
        }
        QVERIFY(isTrusted(home.path(), home.authority()));
    }

    // As long as the check says yes, a client that trusts what the browsers trust gets through to the service.
    void trustedMeansThatConnectionsSucceed()
    {
        const Home home;
        Service service(home);
        home.makeStore(newShared);
        QCOMPARE(service.once(QStringLiteral("init-tls")), 0);
        const quint16 port = service.start();
        QVERIFY(port != 0);
        const auto nssConnects = [&] {
            return run(QStringLiteral("tstclnt"),
                       {QStringLiteral("-d"), QStringLiteral("sql:") + home.file(newShared), QStringLiteral("-h"),
                           QStringLiteral("127.0.0.1"), QStringLiteral("-p"), QString::number(port),
                           QStringLiteral("-Q")})
                == 0;
        };
        QVERIFY(!isTrusted(home.path(), home.authority()));
        QVERIFY(!nssConnects());
        QCOMPARE(service.once(QStringLiteral("trust-ca")), 0);
        QVERIFY(isTrusted(home.path(), home.authority()));
        QVERIFY(nssConnects());

        const auto qtConnects = [port](const QString &authorityFile) {
            QSslSocket socket;
            QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
            configuration.setCaCertificates(QSslCertificate::fromPath(authorityFile));
            socket.setSslConfiguration(configuration);
            socket.connectToHostEncrypted(QStringLiteral("127.0.0.1"), port);
            return socket.waitForEncrypted(5000);
        };
        QVERIFY(qtConnects(home.authority()));
        QVERIFY(!qtConnects(certificate(QStringLiteral("other"))));

        // Another authority under the same name: the browsers' trust in the old one is not carried over.
        QVERIFY(QDir(QFileInfo(home.authority()).path()).removeRecursively());
        QCOMPARE(service.once(QStringLiteral("init-tls")), 0);
        QVERIFY(!isTrusted(home.path(), home.authority()));
        QCOMPARE(service.once(QStringLiteral("trust-ca")), 0);
        QVERIFY(isTrusted(home.path(), home.authority()));
    }
};

ZEMRAK_TEST(certificatetest, CertificateTestTest, QCoreApplication)
#include "tst_certificatetest.moc"
