// Whatever the file of settings holds: the application starts with it, reads the same twice, and can still save.

#include "fuzz/require.h"
#include "health/alertdelivery.h"
#include "host/userdefaults.h"
#include "support/manualclock.h"
#include "support/recordingnotifier.h"
#include "ui/window/shell/windowplacement.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>

using namespace zemrak;
using namespace zemrak::fuzz;

namespace {

constexpr const char *flags[] = {"keepAwake", "onboardingDone", "loginWanted"};
constexpr QLatin1String notified("notifiedAlerts");
constexpr QLatin1String frame("mainWindowFrame");
constexpr QLatin1String registeredPath("loginRegisteredPath");
constexpr QLatin1String lastStart("lastSystemStart");

/// All that the application reads.
struct Settings
{
    QList<bool> on;
    QStringList ids;
    QStringList placement;
    QString path;
    QDateTime start;

    explicit Settings(const UserDefaults &defaults)
        : ids(defaults.strings(notified))
        , placement(defaults.strings(frame))
        , path(defaults.string(registeredPath))
        , start(defaults.date(lastStart))
    {
        for (const char *key : flags)
            on.append(defaults.boolean(QLatin1String(key)));
    }
    bool operator==(const Settings &) const = default;
};

void checkPlacement(const QStringList &strings)
{
    const std::optional<WindowPlacement> placement = WindowPlacement::fromStrings(strings);
    if (!placement)
        return;
    for (const int place : {placement->frame.x(), placement->frame.y()})
        require(place >= -100'000 && place <= 100'000, "a place is within reach of a desktop");
    const QRect screen(0, 0, 1920, 1080);
    require(screen.contains(fitted(placement->frame, {screen, QRect(1920, 0, 800, 600)}))
            || QRect(1920, 0, 800, 600).contains(fitted(placement->frame, {screen, QRect(1920, 0, 800, 600)})),
        "a window lies on a screen");
    require(WindowPlacement::fromStrings(placement->toStrings()) == placement, "a place is kept as it was");
}

void checkNotified(const QStringList &ids)
{
    test::RecordingNotifier notifier;
    test::ManualClock clock;
    AlertDelivery delivery(notifier, clock, ids, [](const QStringList &) {});
    AlertItem alert{.id = ids.value(0), .severity = QStringLiteral("critical"), .count = 1};
    alert.createdAt = static_cast<double>(clock.wallTime());
    delivery.deliver({alert});
    require(notifier.posted.isEmpty() == !ids.isEmpty(), "what was announced is not announced again");
}

// A change is there after the next start, and costs nothing that stood beside it.
void checkSaving(const QString &name, const Settings &before)
{
    const QStringList ids{QStringLiteral("a,b"), QStringLiteral("\"ج;\\"), QString::number(before.ids.size()),
        QStringLiteral("@Variant(")};
    {
        UserDefaults defaults(name);
        defaults.setBoolean(QLatin1String("keepAwake"), !before.on.at(0));
        defaults.setStrings(notified, ids);
    }
    const Settings after{UserDefaults(name)};
    require(after.on.at(0) == !before.on.at(0) && after.ids == ids, "a change is kept");
    require(after.on.mid(1) == before.on.mid(1) && after.placement == before.placement && after.path == before.path
            && after.start == before.start,
        "a change costs nothing else");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argc = 1;
    static char *argv[] = {const_cast<char *>("settings"), nullptr};
    static const QCoreApplication application(argc, argv); // as always when the application reads them
    static const QTemporaryDir folder;
    static int count = 0;
    const QString name = folder.filePath(QString::number(++count)); // a name used before might be answered from memory
    QFile file(name);
    require(file.open(QIODevice::WriteOnly) && file.write(reinterpret_cast<const char *>(data), qint64(size)) >= 0,
        "the file can be written");
    file.close();

    const Settings settings{UserDefaults(name)};
    require(settings == Settings{UserDefaults(name)}, "reading twice gives the same");
    checkPlacement(settings.placement);
    checkNotified(settings.ids);
    checkSaving(name, settings);
    file.remove();
    return 0;
}
