// Times as Arabic words, and the clock that has them put right while somebody looks.
#include "support/manualclock.h"
#include "support/rows.h"
#include "support/testmain.h"
#include "ui/presenters/text/relativeclock.h"
#include "ui/presenters/text/relativetime.h"

#include <limits>

using namespace zemrak;
using namespace zemrak::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class RelativeTimeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void words()
    {
        constexpr qint64 now = 1'711'886'400'000; // 2024-03-31 12:00 UTC
        // How many milliseconds ago; the words of it.
        for (const QStringList &row : rowsOf(R"(
                0          | الآن
                999        | الآن
                1000       | قبل ثانية واحدة
                59999      | قبل ٥٩ ثانية
                60000      | قبل دقيقة واحدة
                120000     | قبل دقيقتين
                180000     | قبل ٣ دقائق
                660000     | قبل ١١ دقيقة
                3599999    | قبل ٥٩ دقيقة
                3600000    | قبل ساعة واحدة
                86399999   | قبل ٢٣ ساعة
                86400000   | قبل يوم واحد
                604799999  | قبل ٦ أيام
                604800000  | قبل أسبوع واحد
                -1000      | الآن
                -10800000  | خلال ٣ ساعات)")) {
            const auto at = double(now - row[0].toLongLong());
            QCOMPARE(row[0] + relativeTime(at, now), row[0] + row[1]);
            for (const QChar digit : u"٠١٢٣٤٥٦٧٨٩"_s)
                QVERIFY(!relativeTime(at, now, Digits::Western).contains(digit));
        }
        QCOMPARE(relativeAge(double(now - 2 * 86'400'000), now), u"يومين"_s);
        for (const qint64 at : {now, now + 86'400'000})
            QCOMPARE(relativeAge(double(at), now), u"ثانية واحدة"_s);
        QCOMPARE(relativeTime(std::numeric_limits<double>::quiet_NaN(), now), u"الآن"_s);
        QVERIFY(relativeTime(1e300, now).startsWith(u"خلال "_s) && relativeTime(-1e300, now).startsWith(u"قبل "_s));
    }

    void monthsAreThoseOfTheCalendar()
    {
        for (const QStringList &row : rowsOf(R"(
                2024-03-02 | 2024-03-31 | قبل ٤ أسابيع
                2024-02-29 | 2024-03-31 | قبل شهر واحد
                2023-04-30 | 2024-03-31 | قبل ١١ شهرًا
                2023-03-31 | 2024-03-31 | قبل سنة واحدة
                2020-04-01 | 2024-03-31 | قبل ٣ سنوات
                2024-03-20 | 2024-05-15 | قبل شهر واحد)")) {
            const auto noon = [](const QString &day) {
                return QDateTime(QDate::fromString(day, Qt::ISODate), QTime(12, 0), Qt::UTC).toMSecsSinceEpoch();
            };
            QCOMPARE(row[0] + relativeTime(double(noon(row[0])), noon(row[1])), row[0] + row[2]);
        }
    }

    void clockTicksOnlyWhileActive()
    {
        ManualClock clock;
        RelativeClock relative(clock);
        QSignalSpy moved(&relative, &RelativeClock::moved);
        clock.advance(10s);
        QVERIFY(moved.isEmpty() && clock.pending() == 0);
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
