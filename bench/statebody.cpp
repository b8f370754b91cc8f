#include "statebody.h"

#include <array>

namespace zemrak::bench {

namespace {

constexpr std::array names{"طابعة المطبخ الرئيسي", "طابعة الكاشير", "طابعة البار الخارجي", "طابعة ملصقات الأصناف",
    "XP-80C Receipt", "طابعة الطابق الثاني"};
constexpr std::array kinds{"test", "cut", "drawer", "designer", "codepage-test"};
constexpr qint64 firstMoment = 1'760'000'000'000;

QByteArray nameOf(int printer)
{
    return names.at(static_cast<std::size_t>(printer) % names.size()) + (' ' + QByteArray::number(printer + 1));
}

QByteArray idOf(int printer)
{
    return "net-" + QByteArray::number(0xa1b2c3000000 + printer, 16);
}

QByteArray printerRecord(int i)
{
    const bool offline = i % 5 == 3;
    QByteArray record = R"({"id":")" + idOf(i) + R"(","name":")" + nameOf(i) + R"(","type":"net","state":")"
        + (offline ? R"(offline","reason":"not_connected")" : R"(ready")");
    record += R"(,"protocol":"escpos","profile":{"protocol":"escpos","dots":576,"cut":"partial","dither":"floyd",)"
              R"("alias":"إيصالات الفرع )"
        + QByteArray::number(i + 1)
        + R"(","role":"receipt","drawerPin":"2","codepage":{"encoding":"windows-1256","escT":50}}})";
    return record;
}

QByteArray jobRecord(int i, int printers, bool done)
{
    const int printer = i % printers;
    const bool failed = i % 11 == 7;
    const QByteArray moment = QByteArray::number(firstMoment - 1000LL * i);
    QByteArray record = R"({"id":")" + QByteArray::number(i, 16).rightJustified(8, '0')
        + R"(-5c1e-4f0a-9d27-3b8e6a1f4c20","printerId":")" + idOf(printer) + R"(","printerName":")" + nameOf(printer)
        + R"(","kind":")" + kinds.at(static_cast<std::size_t>(i) % kinds.size()) + R"(","status":")"
        + (failed      ? "failed"
                : done ? "completed"
                       : "cancelled")
        + R"(","createdAt":)" + moment + R"(,"updatedAt":)" + moment;
    return record + (failed ? R"(,"errorCode":"printer_offline"})" : "}");
}

} // namespace

QByteArray stateBody(StateSize size, quint16 port, bool lastJobDone)
{
    QByteArray body = R"({"version":"0.1.0","httpPort":)" + QByteArray::number(port)
        + R"(,"httpsPort":17732,"tls":true,"printers":[)";
    for (int i = 0; i < size.printers; ++i)
        body += (i > 0 ? "," : "") + printerRecord(i);
    body += R"(],"pairedSites":[{"id":"site-1","origin":"https://shop.example","name":"متجر الحي","createdAt":)"
        + QByteArray::number(firstMoment) + R"(}],"recentJobs":[)";
    for (int i = 0; i < size.jobs; ++i)
        body += (i > 0 ? "," : "") + jobRecord(i, size.printers, i + 1 < size.jobs || lastJobDone);
    return body
        + R"(],"allowedOrigins":["https://pos.zemrak.example","https://shop.example"],)"
          R"("defaultOrigins":["https://pos.zemrak.example"],"autoApprovePairing":false,"alertsUnread":3})";
}

} // namespace zemrak::bench
