#include "support/manualclock.h"
#include "support/testmain.h"
#include "ui/presenters/text/relativeclock.h"
#include "ui/presenters/text/relativetime.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;

namespace {

constexpr qint64 second = 1000;
constexpr qint64 minute = 60 * second;
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

qint64 at(int year, int month, int dayOfMonth)
{
    return QDateTime(QDate(year, month, dayOfMonth), QTime(12, 0), Qt::UTC).toMSecsSinceEpoch();
}

} // namespace

class RelativeTimeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void words_data()
    {
        QTest::addColumn<qint64>("ago");
        QTest::addColumn<QString>("words");
        const auto row
            = [](const char *name, qint64 ago, const QString &words) { QTest::newRow(name) << ago << words; };
        row("now", 0, QStringLiteral("الآن"));
        row("under a second", second - 1, QStringLiteral("الآن"));
        row("a second", second, QStringLiteral("قبل ثانية واحدة"));
        row("cut off, not rounded", minute - 1, QStringLiteral("قبل ٥٩ ثانية"));
        row("a minute", minute, QStringLiteral("قبل دقيقة واحدة"));
        row("two", 2 * minute, QStringLiteral("قبل دقيقتين"));
        row("three", 3 * minute, QStringLiteral("قبل ٣ دقائق"));
        row("eleven", 11 * minute, QStringLiteral("قبل ١١ دقيقة"));
        row("an hour less a bit", hour - 1, QStringLiteral("قبل ٥٩ دقيقة"));
        row("an hour", hour, QStringLiteral("قبل ساعة واحدة"));
        row("a day less a bit", day - 1, QStringLiteral("قبل ٢٣ ساعة"));
        row("a day", day, QStringLiteral("قبل يوم واحد"));
        row("a week less a bit", 7 * day - 1, QStringLiteral("قبل ٦ أيام"));
        row("a week", 7 * day, QStringLiteral("قبل أسبوع واحد"));
        row("a moment ahead", -second, QStringLiteral("الآن"));
        row("ahead", -3 * hour, QStringLiteral("خلال ٣ ساعات"));
    }
    void words()
    {
        QFETCH(qint64, ago);
        QFETCH(QString, words);
        const qint64 now = at(2024, 3, 31);
        QCOMPARE(relativeTime(double(now - ago), now), words);
        QVERIFY(!relativeTime(double(now - ago), now, Digits::Western)
                     .contains(QRegularExpression(QStringLiteral("[٠-٩]"))));
    }

    void monthsAreThoseOfTheCalendar()
    {
        const qint64 now = at(2024, 3, 31);
        QCOMPARE(relativeTime(double(at(2024, 3, 2)), now), QStringLiteral("قبل ٤ أسابيع")); // 29 days, no month
        QCOMPARE(relativeTime(double(at(2024, 2, 29)), now), QStringLiteral("قبل شهر واحد"));
        QCOMPARE(relativeTime(double(at(2023, 4, 30)), now), QStringLiteral("قبل ١١ شهرًا"));
        QCOMPARE(relativeTime(double(at(2023, 3, 31)), now), QStringLiteral("قبل سنة واحدة"));
        QCOMPARE(relativeTime(double(at(2020, 4, 1)), now), QStringLiteral("قبل ٣ سنوات"));
        QCOMPARE(relativeTime(double(at(2024, 3, 20)), at(2024, 5, 15)), QStringLiteral("قبل شهر واحد")); // not yet two
    }

    void ageFollowsSince()
    {
        const qint64 now = at(2024, 3, 31);
        QCOMPARE(relativeAge(double(now - 2 * day), now), QStringLiteral("يومين"));
        QCOMPARE(relativeAge(double(now), now), QStringLiteral("ثانية واحدة"));
        QCOMPARE(relativeAge(double(now + day), now), QStringLiteral("ثانية واحدة"));
    }

    void oddNumbersDoNoHarm()
    {
        const qint64 now = at(2024, 3, 31);
        QCOMPARE(relativeTime(std::numeric_limits<double>::quiet_NaN(), now), QStringLiteral("الآن"));
        QVERIFY(relativeTime(1e300, now).startsWith(QStringLiteral("خلال ")));
        QVERIFY(relativeTime(-1e300, now).startsWith(QStringLiteral("قبل ")));
    }

    void handsMoveOnlyWhileWatched()
    {
        ManualClock clock;
        RelativeClock relative(clock);
        QSignalSpy moved(&relative, &RelativeClock::moved);
        QCOMPARE(clock.pending(), 0);
        clock.advance(10s);
        QVERIFY(moved.isEmpty());

        relative.setActive(true); // stale texts are put right at once
        QCOMPARE(moved.size(), 1);
        QCOMPARE(relative.now(), clock.wallTime());
        clock.advance(2s);
        QCOMPARE(moved.size(), 3);
        relative.setActive(false);
        QCOMPARE(clock.pending(), 0);
    }
};

ZEMRAK_TEST(relativetime, RelativeTimeTest, QCoreApplication)
#include "tst_relativetime.moc"
