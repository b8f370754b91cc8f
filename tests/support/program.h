#pragma once

#include "support/privatebus.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace zemrak::test {

/// Where the build has put the application.
[[nodiscard]] const QString &builtBundle();

/// The real program in a home of its own, with every log message switched on. Its end is asked for, and waited for, by
/// the destructor.
class Program
{
public:
    /// `home` is also its runtime folder, and its settings are in ".config" there. `environment` comes on top of that.
    Program(const QTemporaryDir &home, const PrivateBus &bus, const QStringList &arguments = {},
        const QString &bundle = builtBundle(), const QHash<QString, QString> &environment = {});
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    [[nodiscard]] bool isAlive() const { return m_process.state() != QProcess::NotRunning; }
    /// False while it lives, and after a crash.
    [[nodiscard]] bool endedWith(int status) const;
    void signal(int number) const;
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }
    [[nodiscard]] bool maps(const char *library) const;
    /// Everything that it has written, to both of its streams.
    [[nodiscard]] QByteArray output();

private:
    QProcess m_process;
    QByteArray m_output;
};

/// Of the program, in that home, before it starts: the lines of its settings.
void writeSettings(const QTemporaryDir &home, const QByteArray &lines = "onboardingDone=true\n");

/// Somebody listens on the service's HTTP port.
[[nodiscard]] bool servicePortTaken();
/// False also for a process that has ended and that nobody has cleared away yet.
[[nodiscard]] bool exists(qint64 processId);
/// The processes whose parent is this one.
[[nodiscard]] QList<qint64> childrenOf(qint64 parent);

} // namespace zemrak::test
