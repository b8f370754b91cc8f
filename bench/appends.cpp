#include "appends.h"

#include "measure.h"

#include "app/servicelog.h"

#include <QList>
#include <QStringDecoder>

#include <cstdio>
#include <deque>
#include <vector>

namespace zemrak::bench {

namespace {

using namespace std::chrono_literals;

const QByteArray ascii = "12:04:51 info printer net-a1b2c3000001 answered on port 9100 after 14 ms\n";
// With characters of several code points, which the log must not cut apart.
const QByteArray arabic
    = "١٢:٠٤ تمّت الطباعة على طابعة المطبخ الرئيسي ✅ 🧾 👩🏽‍🍳 "
      "🇸🇦 "
      "خلال "
      "١٤ "
      "مللي "
      "ثانية\n";

// `line` over and over in pieces of `length` bytes, decoded as the output of a process is: a piece may end within a
// character.
QList<QString> pieces(const QByteArray &line, qsizetype length)
{
    constexpr qsizetype count = 61;
    const QByteArray bytes = line.repeated(count * length / line.size() + 1);
    QStringDecoder decoder(QStringDecoder::Utf8);
    QList<QString> result;
    for (qsizetype i = 0; i < count; ++i)
        result.append(decoder.decode(QByteArrayView(bytes).sliced(i * length, length)));
    return result;
}

/// A full log, what is appended to it and how long each append took.
class Series
{
public:
    Series(const QByteArray &line, qsizetype length)
        : m_texts(pieces(line, length))
    {
        m_log.append(QString::fromUtf8(line.repeated(1000)));
    }

    /// Every text once.
    void sample()
    {
        for (const QString &text : m_texts) {
            const Stopwatch watch;
            m_log.append(text);
            m_samples.push_back(watch.microseconds());
        }
    }

    [[nodiscard]] double median() const { return bench::median(m_samples); }

private:
    const QList<QString> m_texts;
    ServiceLog m_log;
    std::vector<double> m_samples;
};

} // namespace

void measureAppends(bool quick)
{
    const Effort effort
        = quick ? Effort{.least = 1, .most = 1, .time = 0ms} : Effort{.least = 20, .most = 2000, .time = 6s};
    const QList<qsizetype> lengths = quick ? QList<qsizetype>{80} : QList<qsizetype>{80, 4096, 65536};
    std::deque<Series> inAscii;
    std::deque<Series> inArabic;
    for (const qsizetype length : lengths) {
        inAscii.emplace_back(ascii, length);
        inArabic.emplace_back(arabic, length);
    }
    // In turn, so that what else the computer does meanwhile weighs on all of them alike.
    repeat(effort, [&] {
        for (std::size_t i = 0; i < inAscii.size(); ++i) {
            inAscii[i].sample();
            inArabic[i].sample();
        }
    });
    std::puts("Appending to a full log, medians in microseconds\n");
    const Table table{"bytes appended", "    ASCII", "Arabic and emoji"};
    for (std::size_t i = 0; i < inAscii.size(); ++i) {
        table.row({number(static_cast<double>(lengths.at(static_cast<qsizetype>(i)))), number(inAscii[i].median(), 2),
            number(inArabic[i].median(), 2)});
    }
    std::puts("");
}

} // namespace zemrak::bench
