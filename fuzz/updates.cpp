// Whatever the service answers about updates: one message, the right state, and no shell line that means anything else
// than it says.

#include "host/updates.h"
#include "fuzz/require.h"
#include "support/manualclock.h"
#include "support/recordingservice.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <cstdint>
#include <regex>
#include <string>

using namespace zemrak;
using namespace zemrak::fuzz;

namespace {

// A bundle of which only the installer is there.
const ApplicationBundle &bundle()
{
    static const QTemporaryDir folder;
    static const ApplicationBundle made = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("zemrak.*=false"));
        const ApplicationBundle named(folder.path());
        QDir().mkpath(folder.filePath(QStringLiteral("resources")));
        QFile installer(named.updateInstaller());
        require(installer.open(QIODevice::WriteOnly), "the installer's place can be written");
        return named;
    }();
    return made;
}

/// One application that asks about an update and is answered.
struct Application
{
    test::RecordingService service;
    QStringList notices;
    test::ManualClock clock;
    QStringList lines; ///< given to the shell
    int ends = 0; ///< times it was told to end
    Updates updates{service, clock, bundle(),
        {.startShell =
                [this](const QString &line) {
                    lines.append(line);
                    return true;
                },
            .terminate = [this] { ++ends; }}};

    Application()
    {
        QObject::connect(&updates, &Updates::notice, [this](const QString &text) { notices.append(text); });
    }

    void answer(const QByteArray &body) { service.requests.takeLast().answer(body); }
};

void checkCheck(const QByteArray &body, const QJsonObject &reply)
{
    const QJsonValue version = reply.value(QLatin1String("version"));
    const bool newer = reply.value(QLatin1String("available")) == QJsonValue(true) && version.isString();
    const bool disabled = reply.value(QLatin1String("enabled")) == QJsonValue(false);
    for (const bool known : {false, true}) {
        Application application;
        if (known) {
            application.updates.checkUpdate();
            application.answer(R"({"available":true,"version":"9"})");
        }
        const QString before = application.updates.availableUpdate();
        application.notices.clear();
        application.updates.checkUpdate();
        application.answer(body);
        require(application.notices.size() == 1, "one message");
        const bool failed = !newer && !disabled && reply.value(QLatin1String("error")).isString();
        const QString after = application.updates.availableUpdate();
        if (newer)
            require(!after.isNull() && after == version.toString(), "a newer release is known by its version");
        else
            require(failed ? after == before : after.isNull(), "no release is made up, and a failure forgets none");
        require(!application.updates.isUpdating() && application.lines.isEmpty(), "a check changes nothing");
    }
}

void checkStage(const QByteArray &body, const QJsonObject &reply)
{
    Application application;
    application.updates.installUpdate();
    application.notices.clear();
    application.answer(body);
    require(application.notices.size() == 1, "one message");
    application.clock.advance(std::chrono::seconds(2));
    require(application.lines.size() == application.ends, "it ends when, and only when, the installer was started");
    require(application.updates.isUpdating() == !application.lines.isEmpty(), "busy until the end, or not at all");
    if (application.lines.isEmpty()) {
        require(application.notices.first().endsWith(QStringLiteral("). البرنامج الحالي لم يتغير.")),
            "a failure says that nothing has changed");
        application.updates.installUpdate();
        require(application.service.requests.size() == 1, "one may try again");
        return;
    }
    // Only this shape leaves the shell no choice: two quoted paths without a quote in them, then plain words.
    static const std::regex shape(
        R"(nohup /bin/bash '[^']+' '(/[^'\x00-\x1f\x7f]*)' '[^']+' ([0-9]+) ([A-Za-z0-9.+_-][A-Za-z0-9.+_~-]*) >/dev/null 2>&1 &)");
    const std::string line = application.lines.first().toStdString();
    std::smatch parts;
    require(application.lines.size() == 1 && std::regex_match(line, parts, shape), "the shell line is plain");
    require(QString::fromStdString(parts[1]) == reply.value(QLatin1String("appPath")).toString()
            && QString::fromStdString(parts[3]) == reply.value(QLatin1String("version")).toString(),
        "the shell line names what the service named");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // std::regex takes a stack frame for each character.
    if (size > 8192)
        return 0;
    const QByteArray body(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QJsonObject reply = QJsonDocument::fromJson(body).object();
    checkCheck(body, reply);
    checkStage(body, reply);
    return 0;
}
